#pragma once

#include "features/feature.h"

/// "lbp": a histogram of the 256 local binary patterns of the inner pixels, as fractions of their number. A bit of the
/// pattern says that a neighbor is strictly brighter than the center; the bits follow the reading order of the 3 x 3
/// block. (T. Ojala, M. Pietikäinen, D. Harwood, "A comparative study of texture measures with classification based on
/// feature distributions", Pattern Recognition 1996, there with "at least as bright".) Without inner pixels every bin
/// is 0, or NaN if a side is exactly 2.
class TFeatureLbp : public TFeature {
 public:
  TFeatureLbp();
  bool ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const override;
};
