#include "features/feature-hsv.h"

#include "features/histogram-vector.h"
#include "images/image-rgb.h"
#include "kernels/hsv-histogram.h"

TFeatureHsv::TFeatureHsv() {
  name = "hsv";
  length = kHistogramLength;
  needsColor = true;
}

bool TFeatureHsv::ProcessColor(const TImageRGB& image, TFeatureVector& vector) const {
  TByteHistogram counts = {};
  kernels::HsvHistogram(image.GetPixels(), image.GetStride(), image.GetWidth(), image.GetHeight(), counts.data());
  // Fractions of all pixels, so that pictures of different sizes compare. In doubles, as a large picture has more
  // pixels than an int can count.
  SetHistogram(name, counts, static_cast<double>(image.GetWidth()) * image.GetHeight(), vector);
  return true;
}
