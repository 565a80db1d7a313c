// "colorlayout": 12 numbers, each from 0 to 1: the lowest spatial frequencies of luminance (0..5), blue difference
// (6..8) and red difference (9..11) of the picture reduced to 8 x 8 cells, the mean first, then in zigzag order. Each
// is the quantised coefficient of the standard times the square root of its weight, divided by 126. The reference
// software's distance sums three Euclidean ones, over luminance and both differences; the L1 distance of these numbers
// stands in for it, it is not the same.
//
// ISO/IEC 15938-3:2002, color layout; E. Kasutani, A. Yamada, "The MPEG-7 Color Layout Descriptor", ICIP 2001. The
// standard takes the mean color of a cell and converts that; here, as in its reference software, the pixels are
// converted and the results averaged, which differs by rounding.

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "plugins/descriptor.h"

const TDescriptor kDescriptor = {"colorlayout", "The lowest frequencies of luminance and color on 8 x 8 cells", 12,
                                 true};

namespace {

constexpr std::size_t kSide = 8;
constexpr std::size_t kChannels = 3;

using TCells = std::array<double, kSide * kSide>;

/// Luminance and color differences of one pixel as the standard scales them, exactly rounded: the decimal fractions
/// times their common denominators, reduced.
std::array<std::uint32_t, kChannels> Convert(const unsigned char* pixel) {
  const std::int32_t red = 1000 * pixel[0];
  const std::int32_t blue = 1000 * pixel[2];
  const std::int32_t luminance = 299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2];
  return {static_cast<std::uint32_t>(219 * luminance + 4224000) / 256000u,
          static_cast<std::uint32_t>(987 * (blue - luminance) + 257000000) / 2000000u,
          static_cast<std::uint32_t>(std::int64_t{4991} * (red - luminance) + 1028000000) / 8000000u};
}

/// The sums of the columns of pixels that fall into each cell, for a row of cells.
struct TCellRow {
  std::array<std::array<std::uint64_t, kSide>, kChannels> sums = {};
};

/// In a picture of fewer than eight columns each stands for eight of them.
void AddRow(const TPicture& picture, int y, TCellRow& cells) {
  // Eight copies of each column are cut as one column would be in eight, without fractions.
  const int repetitions = picture.width < static_cast<int>(kSide) ? static_cast<int>(kSide) : 1;
  const unsigned char* row = picture.Row(y);
  const int width = picture.width * repetitions;
  for (std::size_t cell = 0; cell < kSide; ++cell) {
    // Column x lies in the cell floor(8 x / width).
    const auto first = static_cast<int>((static_cast<std::int64_t>(cell) * width + 7) / 8);
    const auto end = static_cast<int>((static_cast<std::int64_t>(cell + 1) * width + 7) / 8);
    std::array<std::uint64_t, kChannels> sums = {};
    for (int x = first; x < end; ++x) {
      const auto values = Convert(row + static_cast<std::ptrdiff_t>(x / repetitions) * 3);
      for (std::size_t channel = 0; channel < kChannels; ++channel) {
        sums[channel] += values[channel];
      }
    }
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
      cells.sums[channel][cell] += sums[channel];
    }
  }
}

std::array<TCells, kChannels> CellMeans(const TPicture& picture) {
  // Each pixel of a side of less than eight counts eight times, so that every cell has some.
  const int repetitions = picture.height < static_cast<int>(kSide) ? static_cast<int>(kSide) : 1;
  const int columnRepetitions = picture.width < static_cast<int>(kSide) ? static_cast<int>(kSide) : 1;
  const std::int64_t height = std::int64_t{picture.height} * repetitions;
  const std::int64_t width = std::int64_t{picture.width} * columnRepetitions;
  std::array<TCells, kChannels> means;
  for (std::size_t row = 0; row < kSide; ++row) {
    const std::int64_t first = (static_cast<std::int64_t>(row) * height + 7) / 8;
    const std::int64_t end = (static_cast<std::int64_t>(row + 1) * height + 7) / 8;
    TCellRow cells;
    for (std::int64_t y = first; y < end; ++y) {
      AddRow(picture, static_cast<int>(y / repetitions), cells);
    }
    for (std::size_t cell = 0; cell < kSide; ++cell) {
      // Cells may differ by a column or row where the sides are no multiples of eight.
      const std::int64_t columns =
          (static_cast<std::int64_t>(cell + 1) * width + 7) / 8 - (static_cast<std::int64_t>(cell) * width + 7) / 8;
      for (std::size_t channel = 0; channel < kChannels; ++channel) {
        const std::uint64_t mean = cells.sums[channel][cell] / static_cast<std::uint64_t>(columns * (end - first));
        means[channel][kSide * row + cell] = static_cast<double>(mean);
      }
    }
  }
  return means;
}

/// One coefficient of the cosine transform, rounded.
int Coefficient(const TCells& cells, int u, int v) {
  static const auto cosines = [] {
    std::array<std::array<double, kSide>, kSide> table;
    for (std::size_t k = 0; k < kSide; ++k) {
      for (std::size_t x = 0; x < kSide; ++x) {
        table[k][x] = (k == 0 ? std::sqrt(0.125) : 0.5) *
                      std::cos(static_cast<double>((2 * x + 1) * k) * std::numbers::pi / 16.0);
      }
    }
    return table;
  }();
  double sum = 0.0;
  for (std::size_t y = 0; y < kSide; ++y) {
    for (std::size_t x = 0; x < kSide; ++x) {
      sum += cells[kSide * y + x] * cosines[static_cast<std::size_t>(u)][x] * cosines[static_cast<std::size_t>(v)][y];
    }
  }
  // Not 0.5: a coefficient that is a half but for the rounding of the cosines goes down on every machine.
  return static_cast<int>(std::floor(sum + 0.499999));
}

/// The steps of the standard's quantizers: fine around the middle, where means of photographs lie, and coarse at the
/// ends.
int QuantiseLuminanceMean(int coefficient) {
  const int d = coefficient / 8;
  if (d <= 63) {
    return d / 4 / 2;
  }
  if (d <= 95) {
    return (16 + (d - 64) / 2) / 2;
  }
  if (d <= 159) {
    return (32 + (d - 96)) / 2;
  }
  return d <= 191 ? (96 + (d - 160) / 2) / 2 : (112 + (d - 192) / 4) / 2;
}

int QuantiseDifferenceMean(int coefficient) {
  const int d = coefficient / 8;
  if (d <= 63) {
    return 0;
  }
  if (d <= 95) {
    return (d - 64) / 4;
  }
  if (d <= 111) {
    return 8 + (d - 96) / 2;
  }
  if (d <= 143) {
    return 16 + (d - 112);
  }
  if (d <= 159) {
    return 48 + (d - 144) / 2;
  }
  return d <= 191 ? 56 + (d - 160) / 4 : 63;
}

int QuantiseFrequency(int coefficient) {
  const int clamped = std::clamp(coefficient, -256, 239);
  int magnitude = std::abs(clamped);
  if (magnitude > 127) {
    magnitude = 64 + magnitude / 4;
  } else if (magnitude > 63) {
    magnitude = 32 + magnitude / 2;
  }
  // Never negative: the magnitude is 128 at most.
  return ((clamped < 0 ? -magnitude : magnitude) + 132) / 8;
}

struct TChannel {
  int coefficients;
  std::array<double, 6> weights;
};

/// Luminance, blue difference, red difference. The weights are those by which the standard's distance favors low
/// frequencies.
constexpr std::array<TChannel, kChannels> kChannelTable = {{{6, {2, 2, 2, 1, 1, 1}}, {3, {2, 1, 1}}, {3, {4, 2, 2}}}};

/// Horizontal and vertical frequency.
constexpr int kZigzag[6][2] = {{0, 0}, {1, 0}, {0, 1}, {0, 2}, {1, 1}, {2, 0}};

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  const auto means = CellMeans(picture);
  std::size_t next = 0;
  for (std::size_t channel = 0; channel < kChannels; ++channel) {
    for (int i = 0; i < kChannelTable[channel].coefficients; ++i) {
      const int coefficient = Coefficient(means[channel], kZigzag[i][0], kZigzag[i][1]);
      int quantised = 0;
      if (i > 0) {
        quantised = QuantiseFrequency(channel == 0 ? coefficient / 2 : coefficient);
      } else {
        quantised = channel == 0 ? QuantiseLuminanceMean(coefficient) : QuantiseDifferenceMean(coefficient);
      }
      result[next++] = std::sqrt(kChannelTable[channel].weights[static_cast<std::size_t>(i)]) * quantised / 126.0;
    }
  }
}
