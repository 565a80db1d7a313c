#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// createclassifier: a classifier variable with a new classifier of the given type.
class TFunctionCreateClassifier : public TFunction {
 public:
  TFunctionCreateClassifier();
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;
};
