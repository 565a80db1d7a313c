#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// removefeature: takes the vectors of that name, which need not be a known feature, from an image or from every image
/// of a database, and from their segments.
class TFunctionRemoveFeature : public TFunction {
 public:
  TFunctionRemoveFeature();
  bool Execute(const std::vector<std::string>& params) override;
};
