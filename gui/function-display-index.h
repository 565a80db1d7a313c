#pragma once

#include <string>
#include <vector>

#include "retrieval/index-command.h"

/// displayindex: shows the top of a ranking as a grid of 4 x 4 tiles, the query first unless the second parameter is
/// "false".
class TFunctionDisplayIndex : public TIndexCommand {
 public:
  TFunctionDisplayIndex();
  bool Execute(const std::vector<std::string>& params) override;
};
