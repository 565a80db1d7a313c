#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// savefeature: writes one feature of all images of a database into "FeatureStorage". Images without it are skipped.
class TFunctionSaveFeature : public TFunction {
 public:
  TFunctionSaveFeature();
  bool Execute(const std::vector<std::string>& params) override;
};
