// "moments": 81 numbers, each from 0 to 1: mean, standard deviation and skewness of L*, a* and b* in each of 3 x 3
// cells, row by row (element 9 x cell + 3 x channel + moment). The skewness is the cube root of the third central
// moment, so that all three have the unit of the channel. L*: mean / 100, deviation / 50, 0.5 + skewness / 100; a*, b*:
// (mean + 128) / 256, deviation / 128, 0.5 + skewness / 256. A cell without a pixel (pictures of fewer than three
// columns or rows) has mean, deviation and skewness 0.
//
// M. Stricker, M. Orengo, "Similarity of Color Images", SPIE 2420, 1995, who take HSV and the whole picture; the grid
// and L*a*b* are ours. sRGB: IEC 61966-2-1; L*a*b*: CIE 15, with the white of D65 for which the grays have a* = b* = 0.

#include <array>
#include <bit>
#include <cmath>
#include <vector>

#include "plugins/descriptor.h"

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
    table[byte] = static_cast<float>(c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4));
  }
  return table;
}

/// The cube root, or the line that continues it to 0. In single precision, by arithmetic that a compiler can do on
/// several numbers at once: a guess from the exponent, then two steps of Halley's method. The relative error is below
/// 3e-7, that of a* and b* below 3e-4.
inline float LabCurve(float t) {
  constexpr auto kBend = static_cast<float>(216.0 / 24389.0);
  const float bright = t > kBend ? t : kBend;
  const auto third = static_cast<std::int32_t>(static_cast<float>(std::bit_cast<std::int32_t>(bright)) * (1.0f / 3.0f));
  float root = std::bit_cast<float>(third + 709921077);
  for (int i = 0; i < 2; ++i) {
    const float cube = root * root * root;
    root = root * (cube + bright + bright) / (cube + cube + bright);
  }
  const float line = t * static_cast<float>(24389.0 / 27.0 / 116.0) + static_cast<float>(16.0 / 116.0);
  return t > kBend ? root : line;
}

void ConvertChunk(const unsigned char* pixels, std::size_t count, TChunk& lab) {
  static const std::array<float, 256> linear = LinearLight();
  // Each row divided by its sum, the white.
  constexpr float kMatrix[3][3] = {{static_cast<float>(0.4124564 / 0.95047), static_cast<float>(0.3575761 / 0.95047),
                                    static_cast<float>(0.1804375 / 0.95047)},
                                   {0.2126729f, 0.7151522f, 0.0721750f},
                                   {static_cast<float>(0.0193339 / 1.08883), static_cast<float>(0.1191920 / 1.08883),
                                    static_cast<float>(0.9503041 / 1.08883)}};
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
      lab[channel][i] = linear[pixels[kChannels * i + channel]];
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    const float red = lab[0][i];
    const float green = lab[1][i];
    const float blue = lab[2][i];
    const float x = LabCurve(kMatrix[0][0] * red + kMatrix[0][1] * green + kMatrix[0][2] * blue);
    const float y = LabCurve(kMatrix[1][0] * red + kMatrix[1][1] * green + kMatrix[1][2] * blue);
    const float z = LabCurve(kMatrix[2][0] * red + kMatrix[2][1] * green + kMatrix[2][2] * blue);
    lab[0][i] = 116.0f * y - 16.0f;
    lab[1][i] = 500.0f * (x - y);
    lab[2][i] = 200.0f * (y - z);
  }
}

/// The sums of the first three powers of differences from `origin`, in four parts each, which compilers add up side by
/// side.
struct TPowerSums {
  static constexpr std::size_t kParts = 4;

  double origin = 0.0;
  std::array<std::array<double, kParts>, 3> parts = {};

  void Add(std::span<const float> values) {
    // Copies, since the members might be what `values` points to.
    auto first = parts[0];
    auto second = parts[1];
    auto third = parts[2];
    const double from = origin;
    const auto add = [&](std::size_t part, float value) {
      const double d = value - from;
      first[part] += d;
      second[part] += d * d;
      third[part] += d * d * d;
    };
    std::size_t i = 0;
    for (; i + kParts <= values.size(); i += kParts) {
      for (std::size_t part = 0; part < kParts; ++part) {
        add(part, values[i + part]);
      }
    }
    for (; i < values.size(); ++i) {
      add(0, values[i]);
    }
    parts = {first, second, third};
  }

  double Sum(std::size_t power) const { return parts[power][0] + parts[power][1] + parts[power][2] + parts[power][3]; }
};

struct TMoments {
  double mean;
  double deviation;
  double skewness;
};

TMoments CentralMoments(const TPowerSums& power, double count) {
  const double first = power.Sum(0) / count;
  const double second = power.Sum(1) / count;
  const double third = power.Sum(2) / count;
  return {power.origin + first, std::sqrt(std::max(0.0, second - first * first)),
          std::cbrt(third - 3.0 * first * second + 2.0 * first * first * first)};
}

void DescribeCell(const TPicture& picture, int left, int right, int top, int bottom,
                  std::array<TMoments, kChannels>& moments) {
  TChunk lab;
  // Around the colour of the first pixel, so that the moments of a flat cell are exact and no digits are lost in an
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
        power[channel].Add({lab[channel].data(), count});
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
