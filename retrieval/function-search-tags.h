#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/function.h"

/// searchtags: ranks every image of a database by whether it carries a tag: at distance 0 if it does, at 1 if not.
class TFunctionSearchTags : public TFunction {
 public:
  TFunctionSearchTags();
  std::unique_ptr<TVar> CreateReturnVariable() const override;
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;
};
