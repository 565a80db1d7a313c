#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// setclassifiersetting: changes one setting of a classifier, for its next training. The value is not looked at.
class TFunctionSetClassifierSetting : public TFunction {
 public:
  TFunctionSetClassifierSetting();
  bool Execute(const std::vector<std::string>& params) override;
};
