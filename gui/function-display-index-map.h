#pragma once

#include <string>
#include <vector>

#include "retrieval/index-command.h"

/// displayindexmap: draws the top of a ranking on one canvas, each picture in a random direction, the best in the
/// middle and weaker ones towards the rim.
class TFunctionDisplayIndexMap : public TIndexCommand {
 public:
  TFunctionDisplayIndexMap();
  bool Execute(const std::vector<std::string>& params) override;
};
