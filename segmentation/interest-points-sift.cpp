#include "segmentation/interest-points-sift.h"

#include <array>
#include <cstddef>
#include <memory>

#include "Sift/sift.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

constexpr float kNominalSmoothing = 0.5F;
// 1.6 * 2^(1/3)
constexpr float kBaseScale = 2.0158737F;
constexpr int kOctaves = 3;
constexpr int kLevels = 3;
constexpr int kFirstOctave = 1;
constexpr int kFirstLevel = -1;
constexpr int kLastLevel = 4;
// 0.04 / 3 / 2
constexpr float kPeakThreshold = 0.0066666664F;
constexpr float kEdgeThreshold = 10.0F;

/// The gray levels as fractions of white, row by row without gaps.
std::unique_ptr<float[]> ToFractions(const TImageGray& gray) {
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
  VL::Sift sift(values.get(), image.GetWidth(), image.GetHeight(), kNominalSmoothing, kBaseScale, kOctaves, kLevels,
                kFirstOctave, kFirstLevel, kLastLevel);
  sift.DetectKeypoints(kPeakThreshold, kEdgeThreshold);
  for (auto keypoint = sift.KeypointsBegin(); keypoint != sift.KeypointsEnd(); ++keypoint) {
    points.push_back({static_cast<std::int32_t>(keypoint->x), static_cast<std::int32_t>(keypoint->y)});
  }
}
