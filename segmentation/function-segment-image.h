#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// segmentimage: cuts an image, or every image of a database, into segments. "grid" replaces the segments of an image,
/// "sift" adds to them.
class TFunctionSegmentImage : public TFunction {
 public:
  TFunctionSegmentImage();
  bool Execute(const std::vector<std::string>& params) override;
};
