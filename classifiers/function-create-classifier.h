#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/function.h"

/// createclassifier: a classifier variable with a new classifier of the given type.
class TFunctionCreateClassifier : public TFunction {
 public:
  TFunctionCreateClassifier();
  std::unique_ptr<TVar> CreateReturnVariable() const override;
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;
};
