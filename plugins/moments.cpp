// "moments": 81 numbers, each from 0 to 1: mean, standard deviation and skewness of L*, a* and b* in each of 3 x 3
// cells, row by row (element 9 x cell + 3 x channel + moment). The skewness is the cube root of the third central
// moment, so that all three have the unit of the channel. L*: mean / 100, deviation / 50, 0.5 + skewness / 100; a*, b*:
// (mean + 128) / 256, deviation / 128, 0.5 + skewness / 256. A cell without a pixel (pictures of fewer than three
// columns or rows) has mean, deviation and skewness 0.
//
// M. Stricker, M. Orengo, "Similarity of Color Images", SPIE 2420, 1995, who take HSV and the whole picture; the grid
// and L*a*b* are ours. sRGB: IEC 61966-2-1; L*a*b*: CIE 15, with the white of D65 for which the grays have a* = b* = 0.

#include <array>
#include <cmath>
#include <vector>

#include "plugins/descriptor.h"
#include "plugins/moments-rows.h"

const TDescriptor kDescriptor = {"moments", "Mean, deviation and skewness of L*a*b* on a grid of 3 x 3", 81, true};

namespace {

constexpr int kGrid = 3;
constexpr std::size_t kChannels = 3;
/// Pixels that are converted together: their buffers stay in the fastest memory.
constexpr std::size_t kChunk = 512;

using TChunk = std::array<std::array<float, kChunk>, kChannels>;

std::array<float, 256> LinearLight() {
  std::array<float, 256> table;
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    const double c = static_cast<double>(byte) / 255.0;
    // IEC 61966-2-1: a line near black, a power of 2.4 above it. A byte has 256 values, so that a table replaces the
    // power.
    table[byte] = static_cast<float>(c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4));
  }
  return table;
}

void ConvertChunk(const unsigned char* pixels, std::size_t count, TChunk& lab) {
  static const std::array<float, 256> linear = LinearLight();
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
      lab[channel][i] = linear[pixels[kChannels * i + channel]];
    }
  }
  rows::ToLab(lab[0].data(), lab[1].data(), lab[2].data(), count);
}

/// The sums of the first three powers of differences from `origin`.
struct TPowerSums {
  double origin = 0.0;
  rows::TPowerParts parts;
};

struct TMoments {
  double mean;
  double deviation;
  double skewness;
};

TMoments CentralMoments(const TPowerSums& power, double count) {
  const double first = power.parts.Sum(0) / count;
  const double second = power.parts.Sum(1) / count;
  const double third = power.parts.Sum(2) / count;
  // Central moments from powers around the origin: E[d^2] - m^2 and E[d^3] - 3 m E[d^2] + 2 m^3. Rounding may take the
  // variance of an even cell below 0.
  return {power.origin + first, std::sqrt(std::max(0.0, second - first * first)),
          std::cbrt(third - 3.0 * first * second + 2.0 * first * first * first)};
}

void DescribeCell(const TPicture& picture, int left, int right, int top, int bottom,
                  std::array<TMoments, kChannels>& moments) {
  TChunk lab;
  // Around the color of the first pixel, so that the moments of a flat cell are exact and no digits are lost in an
  // even one.
  ConvertChunk(picture.Row(top) + static_cast<std::ptrdiff_t>(left) * 3, 1, lab);
  std::array<TPowerSums, kChannels> power;
  for (std::size_t channel = 0; channel < kChannels; ++channel) {
    power[channel].origin = lab[channel][0];
  }
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; x += static_cast<int>(kChunk)) {
      const std::size_t count = std::min(kChunk, static_cast<std::size_t>(right - x));
      ConvertChunk(picture.Row(y) + static_cast<std::ptrdiff_t>(x) * 3, count, lab);
      for (std::size_t channel = 0; channel < kChannels; ++channel) {
        rows::AddPowers(lab[channel].data(), count, power[channel].origin, power[channel].parts);
      }
    }
  }
  for (std::size_t channel = 0; channel < kChannels; ++channel) {
    moments[channel] =
        CentralMoments(power[channel], static_cast<double>(right - left) * static_cast<double>(bottom - top));
  }
}

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  std::size_t next = 0;
  for (int row = 0; row < kGrid; ++row) {
    for (int column = 0; column < kGrid; ++column) {
      const int left = PartBegin(column, kGrid, picture.width);
      const int right = PartBegin(column + 1, kGrid, picture.width);
      const int top = PartBegin(row, kGrid, picture.height);
      const int bottom = PartBegin(row + 1, kGrid, picture.height);
      std::array<TMoments, kChannels> moments = {};
      if (left < right && top < bottom) {
        DescribeCell(picture, left, right, top, bottom, moments);
      }
      for (std::size_t channel = 0; channel < kChannels; ++channel) {
        const TMoments& own = moments[channel];
        const double scale = channel == 0 ? 100.0 : 256.0;
        const double least = channel == 0 ? 0.0 : -128.0;
        // Single precision may lie beyond the ends by its last digit.
        for (const double moment :
             {(own.mean - least) / scale, own.deviation / (scale / 2.0), 0.5 + own.skewness / scale}) {
          result[next++] = std::clamp(moment, 0.0, 1.0);
        }
      }
    }
  }
}
