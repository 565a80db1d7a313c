#pragma once

#include <string>
#include <vector>

#include "images/image-command.h"

/// segmentimage: cuts an image, or every image of a database, into segments. "grid" replaces the segments of an image,
/// "sift" adds to them.
class TFunctionSegmentImage : public TImageCommand {
 public:
  TFunctionSegmentImage();
  bool Execute(const std::vector<std::string>& params) override;
};
