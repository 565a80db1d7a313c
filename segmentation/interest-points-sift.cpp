#include "segmentation/interest-points-sift.h"

#include <array>
#include <cstddef>
#include <memory>

#include "Sift/sift-parameters.h"
#include "Sift/sift.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

constexpr VL::TSiftParameters kParameters;

/// The gray levels as fractions of white, row by row without gaps.
std::unique_ptr<float[]> ToFractions(const TImageGray& gray) {
  // A table of 256 quotients in place of one division a pixel; doubles first, so that each float is the correctly
  // rounded quotient.
  std::array<float, 256> fractions;
  for (std::size_t level = 0; level < fractions.size(); ++level) {
    fractions[level] = static_cast<float>(static_cast<double>(level) / 255.0);
  }
  const auto width = static_cast<std::size_t>(gray.GetWidth());
  const auto height = static_cast<std::size_t>(gray.GetHeight());
  auto values = std::make_unique_for_overwrite<float[]>(width * height);
  float* value = values.get();
  for (std::size_t y = 0; y < height; ++y) {
    const unsigned char* row = gray.GetPixels() + y * static_cast<std::size_t>(gray.GetStride());
    for (std::size_t x = 0; x < width; ++x) {
      *value++ = fractions[row[x]];
    }
  }
  return values;
}

}  // namespace

void TInterestPointsSift::Detect(const TImageRGB& image, std::vector<TInterestPoint>& points) const {
  points.clear();
  TImageGray gray;
  image.ToGray(gray);
  const auto values = ToFractions(gray);
  VL::Sift sift(values.get(), image.GetWidth(), image.GetHeight(), kParameters.sigman, kParameters.sigma0,
                kParameters.O, kParameters.S, kParameters.omin, kParameters.smin, kParameters.smax);
  // Neither orientations nor descriptors are asked for: only the places become segments.
  sift.DetectKeypoints(kParameters.threshold, kParameters.edgeThreshold);
  for (auto keypoint = sift.KeypointsBegin(); keypoint != sift.KeypointsEnd(); ++keypoint) {
    // Cut toward zero, not rounded: 0 is the center of the first pixel.
    points.push_back({static_cast<std::int32_t>(keypoint->x), static_cast<std::int32_t>(keypoint->y)});
  }
}
