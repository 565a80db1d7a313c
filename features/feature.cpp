#include "features/feature.h"

#include "images/feature-vector.h"

bool TFeature::ProcessColor(const TImageRGB& /*image*/, TFeatureVector& vector) const {
  vector.SetLength(0);
  return true;
}

bool TFeature::ProcessGrayscale(const TImageGray& /*image*/, TFeatureVector& vector) const {
  vector.SetLength(0);
  return true;
}
