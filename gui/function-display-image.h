#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// displayimage: shows an image and the outlines of its segments, in green those that carry a label.
class TFunctionDisplayImage : public TFunction {
 public:
  TFunctionDisplayImage();
  bool Execute(const std::vector<std::string>& params) override;
};
