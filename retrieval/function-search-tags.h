#pragma once

#include <string>
#include <vector>

#include "images/image-command.h"

/// searchtags: ranks every image of a database by whether it carries a tag: at distance 0 if it does, at 1 if not.
class TFunctionSearchTags : public TImageCommand {
 public:
  TFunctionSearchTags();
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;
};
