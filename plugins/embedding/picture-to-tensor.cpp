#include "plugins/embedding/picture-to-tensor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

/// The part of one resized axis that is wanted: positions offset to offset + count of `resized`, which stand for the
/// whole of `source` pixels.
struct TAxis {
  std::int64_t source;
  double resized;
  double offset;
  int count;
};

/// The pixels that make one pixel of the result.
struct TTaps {
  std::int64_t first;
  std::vector<double> weights;
};

/// A triangle that is 2 pixels wide, of the source or of the result, whichever are larger.
std::vector<TTaps> MakeTaps(const TAxis& axis) {
  const double step = static_cast<double>(axis.source) / axis.resized;
  // Reducing, the triangle is as wide as a step, so that no source pixel is skipped; enlarging, it is bilinear
  // interpolation.
  const double reach = std::max(step, 1.0);
  std::vector<TTaps> all(static_cast<std::size_t>(axis.count));
  for (std::size_t i = 0; i < all.size(); ++i) {
    // Pixels have their centers at halves, in the source as in the result.
    const double center = (axis.offset + static_cast<double>(i) + 0.5) * step;
    TTaps& taps = all[i];
    taps.first = std::max<std::int64_t>(static_cast<std::int64_t>(std::floor(center - reach)), 0);
    const std::int64_t end = std::min(static_cast<std::int64_t>(std::ceil(center + reach)), axis.source);
    double sum = 0.0;
    for (std::int64_t position = taps.first; position < end; ++position) {
      const double distance = std::abs(static_cast<double>(position) + 0.5 - center) / reach;
      taps.weights.push_back(std::max(1.0 - distance, 0.0));
      sum += taps.weights.back();
    }
    // The sum is never 0, since some pixel lies within half a pixel of the center. At the edges it makes up for the
    // weights beyond the picture.
    for (double& weight : taps.weights) {
      weight /= sum;
    }
  }
  return all;
}

unsigned char ToByte(double value) {
  return static_cast<unsigned char>(std::clamp(std::floor(value + 0.5), 0.0, 255.0));
}

/// A cut of `count` pixels out of the middle, rounded to an even offset where it falls between two.
TAxis MakeAxis(std::int64_t source, double resized, int count) {
  // Ties to even, as Python rounds, with which networks are trained.
  return {source, resized, std::nearbyint((resized - count) / 2.0), count};
}

}  // namespace

std::vector<float> PictureToTensor(const unsigned char* pixels, std::int32_t width, std::int32_t height,
                                   std::int32_t stride, const TEmbeddingSettings& settings) {
  double resizedWidth = settings.width;
  double resizedHeight = settings.height;
  if (settings.fit == TEmbeddingSettings::TFit::kCrop) {
    const std::int64_t shorter = std::min(width, height);
    const auto resize = [&](std::int64_t side) {
      // In 64 bits: a side of a narrow picture may have 2^28 pixels. Rounded down, as the libraries of the training do.
      const std::int64_t whole = settings.shorterSide * side / shorter;
      return static_cast<double>(whole);
    };
    resizedWidth = resize(width);
    resizedHeight = resize(height);
  }
  // A narrow picture may be resized to billions of pixels a side; only those of the cut are ever worked out.
  const auto columns = MakeTaps(MakeAxis(width, resizedWidth, settings.width));
  const auto rows = MakeTaps(MakeAxis(height, resizedHeight, settings.height));

  // Only the rows that the result looks at.
  const std::int64_t firstRow = rows.front().first;
  const auto rowCount = static_cast<std::size_t>(rows.back().first - firstRow) + rows.back().weights.size();
  const std::size_t rowSize = columns.size() * 3;
  std::vector<unsigned char> narrow(rowCount * rowSize);
  for (std::size_t y = 0; y < rowCount; ++y) {
    const unsigned char* row = pixels + (firstRow + static_cast<std::int64_t>(y)) * stride;
    for (std::size_t x = 0; x < columns.size(); ++x) {
      const unsigned char* pixel = row + columns[x].first * 3;
      double sums[3] = {0.0, 0.0, 0.0};
      for (const double weight : columns[x].weights) {
        for (double& sum : sums) {
          sum += weight * *pixel++;
        }
      }
      // Rounded to bytes between the passes, as the image libraries of the training do.
      std::transform(sums, sums + 3, &narrow[y * rowSize + x * 3], ToByte);
    }
  }

  const std::size_t planeSize = rows.size() * columns.size();
  std::vector<float> tensor(3 * planeSize);
  std::vector<double> sums(rowSize);
  for (std::size_t y = 0; y < rows.size(); ++y) {
    std::fill(sums.begin(), sums.end(), 0.0);
    const unsigned char* value = &narrow[static_cast<std::size_t>(rows[y].first - firstRow) * rowSize];
    for (const double weight : rows[y].weights) {
      for (double& sum : sums) {
        sum += weight * *value++;
      }
    }
    for (std::size_t i = 0; i < rowSize; ++i) {
      const std::size_t color = i % 3;
      const std::size_t channel = settings.isBgr ? 2 - color : color;
      // Plane by plane: networks take channels first.
      tensor[channel * planeSize + y * columns.size() + i / 3] =
          static_cast<float>((ToByte(sums[i]) * settings.scale - settings.mean[channel]) / settings.deviation[channel]);
    }
  }
  return tensor;
}
