#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// reset: empties the variable store. Accepts any parameters and ignores them.
class TFunctionReset : public TFunction {
 public:
  TFunctionReset();
  bool Execute(const std::vector<std::string>& params) override;
};
