#include "features/feature-lbp.h"

#include "features/histogram-vector.h"
#include "images/image-gray.h"
#include "kernels/lbp-histogram.h"

TFeatureLbp::TFeatureLbp() {
  name = "lbp";
  length = kHistogramLength;
  needsGrayscale = true;
}

bool TFeatureLbp::ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const {
  TByteHistogram counts = {};
  kernels::LbpHistogram(image.GetPixels(), image.GetStride(), image.GetWidth(), image.GetHeight(), counts.data());
  // The border of one pixel has no complete neighborhood. With a side of exactly 2 this is 0 / 0, a NaN in every bin;
  // with a smaller one the counts are 0 and so are the bins.
  SetHistogram(name, counts, (image.GetWidth() - 2.0) * (image.GetHeight() - 2.0), vector);
  return true;
}
