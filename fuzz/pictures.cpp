// A picture from bytes, in the formats that are decoded in the process itself, and all that is computed from its
// pixels: features as a whole and in the cells of the grid, keypoints and their squares, sizes up and down, and its
// JPEG.

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "features/feature-hsv.h"
#include "features/feature-lbp.h"
#include "features/segment-feature.h"
#include "fuzz/input.h"
#include "fuzz/picture-size.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"
#include "segmentation/interest-points-sift.h"
#include "segmentation/segment-layout.h"

namespace {

/// The fractions of `count` pixels add up to 1. Without pixels there are none.
void RequireHistogram(const TFeatureVector& vector, int count) {
  const double sum = std::accumulate(vector.GetData(), vector.GetData() + vector.GetLength(), 0.0);
  Require(count > 0 ? std::abs(sum - 1) < 1e-9 : sum == 0 || std::isnan(sum));
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint64_t kMostPixels = 1 << 16;
  const auto [width, height] = PictureSize(data, size);
  if (width == 0 || height == 0 || std::uint64_t{width} * height > kMostPixels) {
    return 0;
  }
  TImageRGB picture;
  if (!picture.LoadFromMemory(data, size)) {
    Require(picture.GetWidth() == 0 && picture.GetHeight() == 0);
    return 0;
  }
  TImageGray gray;
  picture.ToGray(gray);
  Require(gray.GetWidth() == picture.GetWidth() && gray.GetHeight() == picture.GetHeight());

  TFeatureVector vector;
  Require(TFeatureHsv().ProcessColor(picture, vector));
  RequireHistogram(vector, picture.GetWidth() * picture.GetHeight());
  Require(TFeatureLbp().ProcessGrayscale(gray, vector));
  // The patterns of the inner pixels.
  RequireHistogram(vector, std::max(picture.GetWidth() - 2, 0) * std::max(picture.GetHeight() - 2, 0));

  TImageSegmentList segments;
  AppendGridCells(picture.GetWidth(), picture.GetHeight(), segments);
  Require(segments.size() == 64);
  std::vector<TInterestPoint> points;
  TInterestPointsSift().Detect(picture, points);
  for (std::size_t i = 0; i < std::min<std::size_t>(points.size(), 32); ++i) {
    AppendKeypointSquare(points[i], picture.GetWidth(), picture.GetHeight(), segments);
  }
  for (const auto& segment : segments) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    Require(rect.GetX() >= 0 && rect.GetY() >= 0 && rect.GetX() + rect.GetWidth() <= picture.GetWidth() &&
            rect.GetY() + rect.GetHeight() <= picture.GetHeight());
    UpdateSegmentFeature(TFeatureHsv(), picture, gray, *segment);
    UpdateSegmentFeature(TFeatureLbp(), picture, gray, *segment);
  }

  TImageRGB scaled;
  picture.ScaleTo(scaled, 33, 17);
  // The format's decoder takes no more.
  constexpr int kMostJpegPixels = 65500;
  if (picture.GetWidth() <= kMostJpegPixels && picture.GetHeight() <= kMostJpegPixels) {
    TImageRGB restored;
    const std::string jpeg = picture.EncodeJpeg(75);
    Require(!jpeg.empty() &&
            restored.LoadFromMemory(reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size()) &&
            restored.GetWidth() == picture.GetWidth() && restored.GetHeight() == picture.GetHeight());
  }
  return 0;
}
