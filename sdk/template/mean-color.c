/* A template: the mean of red, green and blue, each from 0 to 1. An empty picture has means of 0. */
#include "feature-plugin.h"

const char* GetDescription(void) {
  return "The mean color of a picture";
}

const char* GetShortDescription(void) {
  return "meancolor";
}

bool NeedsGrayscale(void) {
  return false;
}

bool NeedsColor(void) {
  return true;
}

int32_t GetFeatureLength(void) {
  return 3;
}

int32_t ProcessGrayscale(const unsigned char* pixels, int32_t width, int32_t height, int32_t stride, double* features) {
  (void)pixels;
  (void)width;
  (void)height;
  (void)stride;
  (void)features;
  return 0;
}

int32_t ProcessColor(const unsigned char* pixels, int32_t width, int32_t height, int32_t stride, double* features) {
  double sums[3] = {0.0, 0.0, 0.0};
  for (int32_t y = 0; y < height; ++y) {
    const unsigned char* row = pixels + (int64_t)y * stride;
    for (int64_t i = 0; i < 3 * (int64_t)width; ++i) {
      sums[i % 3] += row[i];
    }
  }
  const double count = (double)width * height;
  for (int channel = 0; channel < 3; ++channel) {
    features[channel] = count > 0.0 ? sums[channel] / (255.0 * count) : 0.0;
  }
  return 0;
}
