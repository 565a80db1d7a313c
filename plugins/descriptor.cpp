#include "plugins/descriptor.h"

#include "sdk/feature-plugin.h"

namespace {

/// An exception passes through the interface: the host ends the command with its text.
std::int32_t Process(const unsigned char* pixels, std::int32_t width, std::int32_t height, std::int32_t stride,
                     double* features) {
  const std::span result(features, static_cast<std::size_t>(kDescriptor.length));
  // The host's memory holds whatever was there before, and every element must be written.
  std::fill(result.begin(), result.end(), 0.0);
  const TPicture picture = {pixels, width, height, stride};
  if (!picture.IsEmpty()) {
    Describe(picture, result);
  }
  return 0;
}

}  // namespace

const char* GetDescription() {
  return kDescriptor.description;
}

const char* GetShortDescription() {
  return kDescriptor.name;
}

bool NeedsGrayscale() {
  return !kDescriptor.isColor;
}

bool NeedsColor() {
  return kDescriptor.isColor;
}

std::int32_t GetFeatureLength() {
  return kDescriptor.length;
}

// The host calls the one that fits, so both may be the same.
std::int32_t ProcessGrayscale(const unsigned char* pixels, std::int32_t width, std::int32_t height, std::int32_t stride,
                              double* features) {
  return Process(pixels, width, height, stride, features);
}

std::int32_t ProcessColor(const unsigned char* pixels, std::int32_t width, std::int32_t height, std::int32_t stride,
                          double* features) {
  return Process(pixels, width, height, stride, features);
}
