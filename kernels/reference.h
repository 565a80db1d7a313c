// The kernels as plain loops, one obvious step after the other. What the tests compare the kernels with and the
// benchmarks measure them against; nothing else includes this.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "kernels/cubic-weights.h"
#include "kernels/l1-distance.h"
#include "kernels/rank-sort.h"

namespace kernels::reference {

inline void GrayPlane(const unsigned char* rgb, int rgbStride, unsigned char* gray, int grayStride, int width,
                      int height) {
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      const unsigned char* pixel = rgb + y * rgbStride + 3 * x;
      const unsigned level = (19595u * pixel[0] + 38470u * pixel[1] + 7471u * pixel[2] + 32768u) >> 16;
      gray[y * grayStride + x] = static_cast<unsigned char>(level);
    }
  }
}

inline void SwapRedBlue(const unsigned char* source, std::ptrdiff_t sourceStride, unsigned char* destination,
                        std::ptrdiff_t destinationStride, int width, int height) {
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      for (std::ptrdiff_t byte = 0; byte < 3; ++byte) {
        destination[y * destinationStride + 3 * x + byte] = source[y * sourceStride + 3 * x + 2 - byte];
      }
    }
  }
}

inline int HsvBin(int r, int g, int b) {
  const int v = std::max({r, g, b});
  if (v == 0) {
    return 0;
  }
  int numerator = 0;
  int offset = 0;
  if (r == v) {
    numerator = (g - b) * 60;
  }
  if (g == v) {
    numerator = (b - r) * 60;
    offset = 120;
  }
  if (b == v) {
    numerator = (r - g) * 60;
    offset = 240;
  }
  const int delta = v - std::min({r, g, b});
  const int s = delta * 255 / v;
  if (s == 0) {
    return v / 64;
  }
  const int hue = (offset + numerator / delta + 360) % 360;
  const int h = hue * 255 / 360;
  return h / 16 * 16 + s / 64 * 4 + v / 64;
}

inline void HsvHistogram(const unsigned char* rgb, int stride, int width, int height, std::uint64_t counts[256]) {
  std::fill_n(counts, 256, 0);
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      const unsigned char* pixel = rgb + y * stride + 3 * x;
      ++counts[HsvBin(pixel[0], pixel[1], pixel[2])];
    }
  }
}

inline void LbpHistogram(const unsigned char* gray, int stride, int width, int height, std::uint64_t counts[256]) {
  std::fill_n(counts, 256, 0);
  for (std::ptrdiff_t y = 1; y < height - 1; ++y) {
    for (std::ptrdiff_t x = 1; x < width - 1; ++x) {
      const unsigned char center = gray[y * stride + x];
      int pattern = 0;
      int weight = 1;
      for (std::ptrdiff_t dy = -1; dy <= 1; ++dy) {
        for (std::ptrdiff_t dx = -1; dx <= 1; ++dx) {
          if (dx == 0 && dy == 0) {
            continue;
          }
          if (gray[(y + dy) * stride + x + dx] > center) {
            pattern += weight;
          }
          weight *= 2;
        }
      }
      ++counts[pattern];
    }
  }
}

/// Cubic resampling in the fixed point that resize-cubic.h describes: all rows horizontally, then all columns
/// vertically.
inline void ResizeCubic(int channels, const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                        unsigned char* destination, int destinationStride, int width, int height) {
  if (std::min({sourceWidth, sourceHeight, width, height}) < 1) {
    return;
  }
  const TCubicWeights horizontal(sourceWidth, width);
  const TCubicWeights vertical(sourceHeight, height);
  const std::ptrdiff_t columns = static_cast<std::ptrdiff_t>(channels) * width;
  std::vector<int> rows(static_cast<std::size_t>(columns * sourceHeight));
  for (std::ptrdiff_t y = 0; y < sourceHeight; ++y) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      for (std::ptrdiff_t channel = 0; channel < channels; ++channel) {
        int sum = 0;
        for (std::ptrdiff_t t = 0; t < horizontal.taps; ++t) {
          sum += horizontal.weights[x * horizontal.pitch + t] *
                 source[y * sourceStride + (horizontal.first[x] + t) * channels + channel];
        }
        rows[y * columns + x * channels + channel] = (sum + 128) >> 8;
      }
    }
  }
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t column = 0; column < columns; ++column) {
      int sum = 0;
      for (std::ptrdiff_t t = 0; t < vertical.taps; ++t) {
        sum += vertical.weights[y * vertical.pitch + t] * rows[(vertical.first[y] + t) * columns + column];
      }
      destination[y * destinationStride + column] =
          static_cast<unsigned char>(std::clamp((sum + (1 << 19)) >> 20, 0, 255));
    }
  }
}

inline void ResizeCubicRgb(const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                           unsigned char* destination, int destinationStride, int width, int height) {
  ResizeCubic(3, source, sourceStride, sourceWidth, sourceHeight, destination, destinationStride, width, height);
}

inline void ResizeCubicGray(const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                            unsigned char* destination, int destinationStride, int width, int height) {
  ResizeCubic(1, source, sourceStride, sourceWidth, sourceHeight, destination, destinationStride, width, height);
}

inline void AddL1Distances(TVectors query, const double* const* candidates, std::size_t count, double* sums) {
  for (std::size_t c = 0; c < count; ++c) {
    for (const auto& elements : query) {
      for (std::size_t i = 0; i < elements.size(); ++i) {
        sums[c] += std::fabs(elements[i] - (*candidates)[i]);
      }
      ++candidates;
    }
  }
}

inline std::size_t FindNearestL1(const double* query, std::size_t length, const double* const* candidates,
                                 std::size_t count, double& distance) {
  const std::array<std::span<const double>, 1> vectors{{{query, length}}};
  std::size_t nearest = count;
  for (std::size_t c = 0; c < count; ++c) {
    double sum = 0.0;
    AddL1Distances(vectors, candidates + c, 1, &sum);
    if (sum < distance) {
      distance = sum;
      nearest = c;
    }
  }
  return nearest;
}

inline void RankSort(std::vector<TRankEntry>& entries) {
  std::stable_sort(entries.begin(), entries.end(),
                   [](const TRankEntry& a, const TRankEntry& b) { return a.distance < b.distance; });
}

inline void ByteDistances(const std::uint8_t* query, const std::uint8_t* rows, std::size_t length, std::size_t count,
                          std::uint32_t* distances) {
  for (std::size_t row = 0; row < count; ++row) {
    distances[row] = 0;
    for (std::size_t i = 0; i < length; ++i) {
      distances[row] += static_cast<std::uint32_t>(std::abs(query[i] - rows[row * length + i]));
    }
  }
}

// `rows` in one block, one behind the other.
inline void DotProducts(const double* query, std::size_t length, const double* rows, std::size_t count, double* sums) {
  for (std::size_t row = 0; row < count; ++row) {
    sums[row] = 0.0;
    for (std::size_t i = 0; i < length; ++i) {
      sums[row] += query[i] * rows[row * length + i];
    }
  }
}

inline void DotProductsByFours(const double* query, std::size_t length, const double* rows, std::size_t count,
                               double* sums) {
  for (std::size_t r = 0; r < count; ++r) {
    const double* row = rows + r * length;
    sums[r] = 0.0;
    for (std::size_t i = length % 4; i > 0; --i) {
      sums[r] += query[i - 1] * row[i - 1];
    }
    for (std::size_t i = length % 4; i < length; i += 4) {
      sums[r] += query[i] * row[i] + query[i + 1] * row[i + 1] + query[i + 2] * row[i + 2] + query[i + 3] * row[i + 3];
    }
  }
}

inline void SquaredDistances(const double* query, std::size_t length, const double* rows, std::size_t count,
                             double* sums) {
  for (std::size_t row = 0; row < count; ++row) {
    sums[row] = 0.0;
    for (std::size_t i = 0; i < length; ++i) {
      const double difference = query[i] - rows[row * length + i];
      sums[row] += difference * difference;
    }
  }
}

inline void ScaleRange(const double* minimum, const double* maximum, std::size_t length, double* values) {
  for (std::size_t i = 0; i < length; ++i) {
    const double range = maximum[i] - minimum[i];
    if (range > 0) {
      values[i] = 2 * (values[i] - minimum[i]) / range - 1;
    }
  }
}

}  // namespace kernels::reference
