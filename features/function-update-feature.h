#pragma once

#include <memory>
#include <string>
#include <vector>

#include "images/image-command.h"

class TFeature;
class TImageGray;
class TImageRGB;
class TImageSegment;
class TPictureReport;
class TVarImage;

/// updatefeature: computes a feature for an image, or for every image of a database, on the whole image and on each of
/// its segments. The one place where pixels meet features.
class TFunctionUpdateFeature : public TImageCommand {
 public:
  TFunctionUpdateFeature();
  bool Execute(const std::vector<std::string>& params) override;

 private:
  /// Decodes the file once for all segments. A file that cannot be read acts as a picture of 0 x 0.
  bool ProcessImage(const TFeature& feature, TVarImage& image, TPictureReport& report) const;
};
