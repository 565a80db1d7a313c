#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// getclassifiersetting: prints one setting of a classifier, or all of them. A setting that does not exist prints as
/// empty.
class TFunctionGetClassifierSetting : public TFunction {
 public:
  TFunctionGetClassifierSetting();
  bool Execute(const std::vector<std::string>& params) override;
};
