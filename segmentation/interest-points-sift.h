#pragma once

#include <vector>

#include "segmentation/interest-points.h"

/// The keypoints of SIFT (Sift/sift.h) in the gray plane of an image. The full resolution is not searched: three
/// octaves, of a half, a quarter and an eighth of it.
class TInterestPointsSift : public TInterestPoints {
 public:
  void Detect(const TImageRGB& image, std::vector<TInterestPoint>& points) const override;
};
