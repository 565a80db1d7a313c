#pragma once

#include "features/feature.h"

/// "hsv": a histogram of 256 bins over quantised HSV color, 16 steps of hue by 4 of saturation by 4 of value, as
/// fractions of all pixels. A picture without pixels gives NaN in every bin.
class TFeatureHsv : public TFeature {
 public:
  TFeatureHsv();
  bool ProcessColor(const TImageRGB& image, TFeatureVector& vector) const override;
};
