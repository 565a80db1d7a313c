#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <numeric>
#include <random>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include "kernels/byte-distance.h"
#include "kernels/gray-plane.h"
#include "kernels/hsv-histogram.h"
#include "kernels/l1-distance-tile.h"
#include "kernels/l1-distance.h"
#include "kernels/lbp-histogram.h"
#include "kernels/packed-rows.h"
#include "kernels/rank-sort.h"
#include "kernels/reference.h"
#include "kernels/resize-cubic.h"
#include "kernels/scale-range.h"
#include "kernels/swap-red-blue.h"

namespace {

using TBytes = std::vector<unsigned char>;
using TCounts = std::array<std::uint64_t, 256>;
using TLengths = std::vector<std::size_t>;

/// Runs `check` once on each SIMD level of this machine, the one without vectors included.
template <typename TCheck>
void OnEachTarget(TCheck check) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    SCOPED_TRACE(hwy::TargetName(target));
    check();
  }
  hwy::SetSupportedTargetsForTest(0);
}

/// A number of elements, which the tests work out in int.
std::size_t Count(int count) {
  return static_cast<std::size_t>(count);
}

TBytes RandomBytes(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  TBytes bytes(count);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random() >> 24); });
  return bytes;
}

/// TBytes with few levels and long runs: neighbors that are equal, and all that saturates.
TBytes RunsOfBytes(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  constexpr std::array<unsigned char, 6> kLevels{0, 1, 63, 128, 254, 255};
  TBytes bytes;
  while (bytes.size() < count) {
    bytes.resize(bytes.size() + 1 + random() % 40, kLevels[random() % kLevels.size()]);
  }
  bytes.resize(count);
  return bytes;
}

/// Picture sizes that leave each number of pixels beside whole vectors, and rows longer than a block of work.
std::vector<std::array<int, 2>> OddSizes() {
  std::vector<std::array<int, 2>> sizes{{0, 0}, {0, 4}, {4, 0}, {131, 3}, {4095, 3}, {4099, 4}, {8195, 3}};
  for (int width = 1; width <= 72; ++width) {
    sizes.push_back({width, 1 + width % 5});
  }
  return sizes;
}

// Every color once, 4096 to a row.
const TBytes& AllColors() {
  static const TBytes colors = [] {
    TBytes bytes;
    bytes.reserve(3u << 24);
    for (unsigned color = 0; color < 1u << 24; ++color) {
      bytes.push_back(static_cast<unsigned char>(color >> 16));
      bytes.push_back(static_cast<unsigned char>(color >> 8));
      bytes.push_back(static_cast<unsigned char>(color));
    }
    return bytes;
  }();
  return colors;
}

TEST(GrayPlane, WeighsTheChannels) {
  // Worked out by hand from (19595 R + 38470 G + 7471 B + 32768) / 65536, cut.
  const TBytes rgb{0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255, 1, 2, 3, 200, 100, 50, 128, 128, 128};
  const TBytes expected{0, 255, 76, 150, 29, 2, 124, 128};
  TBytes gray(expected.size());
  kernels::reference::GrayPlane(rgb.data(), 24, gray.data(), 8, 8, 1);
  EXPECT_EQ(gray, expected);
}

TEST(GrayPlane, EqualsThePlainLoopOnEachTarget) {
  const TBytes& colors = AllColors();
  TBytes expected(1u << 24);
  kernels::reference::GrayPlane(colors.data(), 3 * 4096, expected.data(), 4096, 4096, 4096);
  OnEachTarget([&] {
    TBytes gray(1u << 24);
    kernels::GrayPlane(colors.data(), 3 * 4096, gray.data(), 4096, 4096, 4096);
    EXPECT_TRUE(gray == expected) << "on some of all colors";

    for (const auto& [width, height] : OddSizes()) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      const int rgbStride = 3 * width + 5;
      const int grayStride = width + 3;
      const TBytes rgb = RandomBytes(Count(rgbStride * height), static_cast<unsigned>(width));
      // The bytes between the rows hold 0xA5 before, and must do so afterwards.
      TBytes wanted(Count(grayStride * height), 0xA5);
      TBytes written = wanted;
      kernels::reference::GrayPlane(rgb.data(), rgbStride, wanted.data(), grayStride, width, height);
      kernels::GrayPlane(rgb.data(), rgbStride, written.data(), grayStride, width, height);
      EXPECT_EQ(written, wanted);
    }
  });
}

TEST(SwapRedBlue, ReversesTheBytesOfEachPixelAndTurnsRowsRound) {
  // Two rows of two pixels, the second row first, with two bytes of padding.
  const TBytes bitmap{7, 8, 9, 10, 11, 12, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0};
  const TBytes expected{3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10};
  OnEachTarget([&] {
    TBytes rgb(expected.size());
    kernels::SwapRedBlue(bitmap.data() + 8, -8, rgb.data(), 6, 2, 2);
    EXPECT_EQ(rgb, expected);
  });
}

TEST(SwapRedBlue, EqualsThePlainLoopOnEachTarget) {
  OnEachTarget([&] {
    for (const auto& [width, height] : OddSizes()) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      const std::ptrdiff_t stride = 3 * width + 1;
      const TBytes source = RandomBytes(static_cast<std::size_t>(stride * height), static_cast<unsigned>(width));
      TBytes wanted(static_cast<std::size_t>((stride + 4) * height), 0xA5);
      TBytes written = wanted;
      const std::ptrdiff_t lastRow = (stride + 4) * std::max(height - 1, 0);
      kernels::reference::SwapRedBlue(source.data(), stride, wanted.data() + lastRow, -stride - 4, width, height);
      kernels::SwapRedBlue(source.data(), stride, written.data() + lastRow, -stride - 4, width, height);
      EXPECT_EQ(written, wanted);
    }
  });
}

TEST(HsvHistogram, PutsPixelsIntoTheBinsOfTheTable) {
  struct {
    TBytes pixel;
    int bin;
  } const kCases[] = {
      {{0, 0, 0}, 0},       {{63, 63, 63}, 0},  {{64, 64, 64}, 1},    {{128, 128, 128}, 2},
      {{255, 255, 255}, 3}, {{255, 0, 0}, 15},  {{255, 255, 0}, 47},  {{0, 255, 0}, 95},
      {{0, 255, 255}, 127}, {{0, 0, 255}, 175}, {{255, 0, 255}, 223}, {{200, 100, 50}, 11},
  };
  for (const auto& [pixel, bin] : kCases) {
    EXPECT_EQ(kernels::reference::HsvBin(pixel[0], pixel[1], pixel[2]), bin) << testing::PrintToString(pixel);
    OnEachTarget([&, &color = pixel, &place = bin] {
      // One pixel alone, and enough of it for whole vectors.
      for (const int width : {1, 200}) {
        TBytes rgb;
        for (int x = 0; x < width; ++x) {
          rgb.insert(rgb.end(), color.begin(), color.end());
        }
        TCounts expected{};
        expected[static_cast<std::size_t>(place)] = static_cast<std::uint64_t>(width);
        TCounts counts;
        kernels::HsvHistogram(rgb.data(), 3 * width, width, 1, counts.data());
        EXPECT_EQ(counts, expected) << testing::PrintToString(color) << " times " << width;
      }
    });
  }
}

TEST(HsvHistogram, HasTheBinOfThePlainFormulaForEveryColor) {
  // One histogram for each pair of red and green, so that errors of different colors cannot make up for one another.
  const TBytes& colors = AllColors();
  std::vector<TCounts> expected(1u << 16);
  for (std::size_t pair = 0; pair < expected.size(); ++pair) {
    kernels::reference::HsvHistogram(colors.data() + pair * 768, 768, 256, 1, expected[pair].data());
  }
  const auto wrongHistograms = [&](int width) {
    std::size_t wrong = 0;
    for (std::size_t pair = 0; pair < expected.size(); ++pair) {
      TCounts counts;
      kernels::HsvHistogram(colors.data() + pair * 768, 3 * width, width, 256 / width, counts.data());
      wrong += counts != expected[pair];
    }
    return wrong;
  };
  OnEachTarget([&] { EXPECT_EQ(wrongHistograms(256), 0u); });
  // Rows that are too short for a vector go another way, the same one on each target.
  EXPECT_EQ(wrongHistograms(4), 0u);
}

TEST(HsvHistogram, EqualsThePlainLoopOnEachTarget) {
  OnEachTarget([&] {
    for (const auto& [width, height] : OddSizes()) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      const int stride = 3 * width + 7;
      const std::size_t size = Count(stride * height);
      for (const TBytes& rgb : {RandomBytes(size, 1), RunsOfBytes(size, 2)}) {
        TCounts expected;
        TCounts counts;
        counts.fill(99);  // what was there is overwritten
        kernels::reference::HsvHistogram(rgb.data(), stride, width, height, expected.data());
        kernels::HsvHistogram(rgb.data(), stride, width, height, counts.data());
        EXPECT_EQ(counts, expected);
        EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}),
                  static_cast<std::uint64_t>(width * height));
      }
    }
  });
}

TEST(LbpHistogram, SetsOneBitForEachGreaterNeighbor) {
  struct {
    TBytes block;
    std::size_t pattern;
  } const kCases[] = {
      {{9, 9, 9, 9, 5, 9, 9, 9, 9}, 255},
      {{5, 5, 5, 5, 5, 5, 5, 5, 5}, 0},
      {{1, 2, 3, 4, 200, 6, 7, 8, 9}, 0},
      {{6, 5, 5, 5, 5, 5, 5, 5, 5}, 1},
      {{5, 6, 5, 5, 5, 5, 5, 5, 5}, 2},
      {{5, 5, 6, 5, 5, 5, 5, 5, 5}, 4},
      {{5, 5, 5, 6, 5, 5, 5, 5, 5}, 8},
      {{5, 5, 5, 5, 5, 6, 5, 5, 5}, 16},
      {{5, 5, 5, 5, 5, 5, 6, 5, 5}, 32},
      {{5, 5, 5, 5, 5, 5, 5, 6, 5}, 64},
      {{5, 5, 5, 5, 5, 5, 5, 5, 6}, 128},
      // 128 is greater than 127, and 255 greater than 0: bytes have no sign.
      {{128, 0, 0, 0, 127, 255, 0, 0, 0}, 17},
  };
  for (const auto& [block, pattern] : kCases) {
    TCounts expected{};
    expected[pattern] = 1;
    TCounts counts;
    kernels::reference::LbpHistogram(block.data(), 3, 3, 3, counts.data());
    EXPECT_EQ(counts, expected) << testing::PrintToString(block);
    OnEachTarget([&, &levels = block] {
      kernels::LbpHistogram(levels.data(), 3, 3, 3, counts.data());
      EXPECT_EQ(counts, expected) << testing::PrintToString(levels);
    });
  }
}

TEST(LbpHistogram, EqualsThePlainLoopOnEachTarget) {
  OnEachTarget([&] {
    for (const auto& [width, height] : OddSizes()) {
      SCOPED_TRACE(testing::Message() << width << " x " << height + 1);
      const int stride = width + 3;
      const std::size_t size = Count(stride * (height + 1));
      for (const TBytes& gray : {RandomBytes(size, 1), RunsOfBytes(size, 2)}) {
        TCounts expected;
        TCounts counts;
        counts.fill(99);  // what was there is overwritten
        kernels::reference::LbpHistogram(gray.data(), stride, width, height + 1, expected.data());
        kernels::LbpHistogram(gray.data(), stride, width, height + 1, counts.data());
        EXPECT_EQ(counts, expected);
        const int interior = std::max(width - 2, 0) * std::max(height - 1, 0);
        EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}),
                  static_cast<std::uint64_t>(interior));
      }
    }
  });
}

using TResizeFunction = void (*)(const unsigned char*, int, int, int, unsigned char*, int, int, int);

struct TResizeKind {
  int channels;
  TResizeFunction kernel;
  TResizeFunction plain;
};

constexpr TResizeKind kResizeKinds[] = {
    {1, kernels::ResizeCubicGray, kernels::reference::ResizeCubicGray},
    {3, kernels::ResizeCubicRgb, kernels::reference::ResizeCubicRgb},
};

// Source width and height, destination width and height.
constexpr int kResizeSizes[][4] = {
    {1, 1, 1, 1},       {1, 1, 9, 7},    {9, 7, 1, 1},     {1, 40, 5, 3},    {40, 1, 3, 5},    {2, 2, 64, 48},
    {3, 5, 5, 3},       {7, 9, 7, 9},    {31, 17, 33, 18}, {33, 18, 31, 17}, {64, 48, 40, 30}, {65, 49, 16, 12},
    {160, 120, 40, 30}, {5, 300, 9, 11}, {300, 5, 11, 9},  {10, 10, 70, 71}, {640, 3, 7, 2},   {99, 100, 98, 101},
};

TBytes Resized(TResizeFunction resize, const TBytes& source, int channels, const int (&size)[4], int padding) {
  const int stride = size[2] * channels + padding;
  TBytes result(static_cast<std::size_t>(stride * size[3]), 0xA5);
  resize(source.data(), size[0] * channels + padding, size[0], size[1], result.data(), stride, size[2], size[3]);
  return result;
}

/// One level, evaluated in floating point straight from the definition: the kernel of Catmull and Rom over all pixels,
/// stretched where an axis shrinks, divided by the sum of the weights that fall into the picture.
double ExactLevel(const TBytes& source, int channels, const int (&size)[4], int x, int y, int channel) {
  const auto weight = [](int pixel, int output, int from, int to) {
    const double step = static_cast<double>(from) / to;
    const double t = std::abs((pixel + 0.5) - (output + 0.5) * step) / std::max(1.0, step);
    if (t >= 2) {
      return 0.0;
    }
    return t < 1 ? 1 - 2.5 * t * t + 1.5 * t * t * t : 2 - 4 * t + 2.5 * t * t - 0.5 * t * t * t;
  };
  double sum = 0;
  double weights = 0;
  for (int row = 0; row < size[1]; ++row) {
    const double vertical = weight(row, y, size[1], size[3]);
    for (int column = 0; vertical != 0 && column < size[0]; ++column) {
      const double product = vertical * weight(column, x, size[0], size[2]);
      sum += product * source[Count((row * size[0] + column) * channels + channel)];
      weights += product;
    }
  }
  return std::clamp(sum / weights, 0.0, 255.0);
}

TEST(ResizeCubic, IsWithinOneLevelOfTheExactValue) {
  for (const TResizeKind& kind : kResizeKinds) {
    for (const auto& size : kResizeSizes) {
      SCOPED_TRACE(testing::PrintToString(size) + " channels " + std::to_string(kind.channels));
      const std::size_t bytes = Count(size[0] * size[1] * kind.channels);
      // The runs hold the greatest steps that a picture can have, which make the greatest overshoot.
      for (const TBytes& source : {RandomBytes(bytes, 3), RunsOfBytes(bytes, 4)}) {
        const TBytes result = Resized(kind.kernel, source, kind.channels, size, 0);
        double worst = 0;
        std::size_t i = 0;
        for (int y = 0; y < size[3]; ++y) {
          for (int x = 0; x < size[2]; ++x) {
            for (int channel = 0; channel < kind.channels; ++channel) {
              const double exact = ExactLevel(source, kind.channels, size, x, y, channel);
              worst = std::max(worst, std::abs(result[i++] - exact));
            }
          }
        }
        // Half a level is the rounding to whole ones.
        EXPECT_LE(worst, 1.0);
      }
    }
  }
}

TEST(ResizeCubic, EqualsThePlainLoopOnEachTarget) {
  OnEachTarget([&] {
    for (const TResizeKind& kind : kResizeKinds) {
      for (const auto& size : kResizeSizes) {
        SCOPED_TRACE(testing::PrintToString(size) + " channels " + std::to_string(kind.channels));
        const std::size_t bytes = Count((size[0] * kind.channels + 5) * size[1]);
        for (const TBytes& source : {RandomBytes(bytes, 5), RunsOfBytes(bytes, 6)}) {
          EXPECT_EQ(Resized(kind.kernel, source, kind.channels, size, 5),
                    Resized(kind.plain, source, kind.channels, size, 5));
        }
      }
    }
  });
}

TEST(ResizeCubic, KeepsAnEvenPictureEvenAndCopiesAtTheSameSize) {
  OnEachTarget([&] {
    for (const TResizeKind& kind : kResizeKinds) {
      for (const auto& size : kResizeSizes) {
        for (const auto level : std::initializer_list<unsigned char>{0, 1, 127, 255}) {
          const TBytes even(Count(size[0] * size[1] * kind.channels), level);
          const TBytes result = Resized(kind.kernel, even, kind.channels, size, 0);
          EXPECT_EQ(result, TBytes(result.size(), level)) << testing::PrintToString(size);
        }
        const int same[4] = {size[0], size[1], size[0], size[1]};
        const TBytes source = RandomBytes(Count(size[0] * size[1] * kind.channels), 7);
        EXPECT_EQ(Resized(kind.kernel, source, kind.channels, same, 0), source) << testing::PrintToString(size);
      }
    }
  });
}

TEST(ResizeCubic, KeepsTheShareOfTinyWeights) {
  // 60,000 taps with weights of a fraction of the smallest unit each. The left half is black, the right half white: the
  // kernel is symmetric about the middle, so that the result is half way, give or take the rounding.
  TBytes source(60000, 0);
  std::fill(source.begin() + 30000, source.end(), 255);
  unsigned char level = 0;
  kernels::ResizeCubicGray(source.data(), 60000, 60000, 1, &level, 1, 1, 1);
  EXPECT_NEAR(level, 127.5, 1.0);
}

TEST(ResizeCubic, WritesNothingForEmptyPictures) {
  const TBytes source(64, 7);
  for (const TResizeKind& kind : kResizeKinds) {
    for (int zero = 0; zero < 4; ++zero) {
      for (const int empty : {0, -1}) {
        int size[4] = {2, 2, 2, 2};
        size[zero] = empty;
        TBytes destination(64, 0xA5);
        kind.kernel(source.data(), 8, size[0], size[1], destination.data(), 8, size[2], size[3]);
        EXPECT_EQ(destination, TBytes(64, 0xA5));
      }
    }
  }
}

TEST(AddL1Distances, EqualsThePlainLoopToTheLastBit) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::mt19937 random(8);
  // Numbers of very different sizes: each other order of additions would round differently.
  const auto number = [&] { return std::ldexp(static_cast<double>(random()) - 2e9, static_cast<int>(random() % 40)); };

  OnEachTarget([&] {
    for (const auto& lengths : {TLengths{}, {0}, {1}, {2}, {7}, {255}, {256}, {256, 7}, {2, 0, 300}, {9, 1, 16}}) {
      for (const std::size_t count : {0, 1, 3, 4, 5, 8, 100}) {
        SCOPED_TRACE(testing::Message() << count << " candidates of " << testing::PrintToString(lengths));
        std::vector<std::vector<double>> vectors;
        for (std::size_t c = 0; c <= count; ++c) {
          for (const std::size_t length : lengths) {
            vectors.emplace_back(length);
            std::generate(vectors.back().begin(), vectors.back().end(), number);
            if (length > 0 && c % 3 == 1) {
              vectors.back()[random() % length] = c % 2 == 0 ? kNaN : -kInfinity;
            }
          }
        }
        if (lengths == TLengths{7}) {
          vectors[0][3] = kInfinity;  // less infinity gives NaN
        }
        // The first are the query.
        const std::vector<std::span<const double>> query(vectors.begin(), vectors.begin() + std::ssize(lengths));
        std::vector<const double*> candidates;
        for (std::size_t i = lengths.size(); i < vectors.size(); ++i) {
          candidates.push_back(vectors[i].data());
        }
        std::vector<double> expected(count);
        std::generate(expected.begin(), expected.end(), number);  // the sums go on from where they stand
        std::vector<double> sums = expected;
        kernels::reference::AddL1Distances(query, candidates.data(), count, expected.data());
        kernels::AddL1Distances(query, candidates.data(), count, sums.data());
        for (std::size_t c = 0; c < count; ++c) {
          EXPECT_EQ(std::bit_cast<std::uint64_t>(sums[c]), std::bit_cast<std::uint64_t>(expected[c])) << c;
        }
      }
    }
  });
}

TEST(AddL1Distances, SumsAbsoluteDifferences) {
  constexpr std::array kFirst{1.0, -2.0, 0.5};
  constexpr std::array kSecond{8.0};
  const std::array<std::span<const double>, 2> query{kFirst, kSecond};
  const double near[] = {1.0, -2.0, 0.25};
  const double far[] = {-1.0, 3.0, 8.5};
  const double zero = 0.0;
  const std::array<const double*, 10> candidates{far,  kSecond.data(), near, &zero, far, kSecond.data(),
                                                 near, &zero,          far,  &zero};
  std::array<double, 5> sums{10.0};
  kernels::AddL1Distances(query, candidates.data(), sums.size(), sums.data());
  EXPECT_EQ(sums, (std::array<double, 5>{25.0, 8.25, 15.0, 8.25, 23.0}));
}

TEST(AddL1DistanceTile, EqualsThePlainLoopToTheLastBit) {
  std::mt19937 random(10);
  const auto number = [&] { return std::ldexp(static_cast<double>(random()) - 2e9, static_cast<int>(random() % 40)); };
  OnEachTarget([&] {
    for (const std::size_t length : {0, 1, 7, 256, 257, 600}) {
      for (const std::size_t count : {0, 1, 15, 16, 17, 40}) {
        for (const std::size_t queryCount : {0, 1, 3, 4, 5, 9}) {
          SCOPED_TRACE(testing::Message() << queryCount << " from " << count << " of " << length);
          std::vector<std::vector<double>> vectors(queryCount + count, std::vector<double>(length));
          std::vector<const double*> pointers;
          for (auto& vector : vectors) {
            std::generate(vector.begin(), vector.end(), number);
            pointers.push_back(vector.data());
          }
          if (count > 2 && length > 0) {
            vectors[queryCount + 2][length / 2] = std::numeric_limits<double>::infinity();
          }
          // Rows further apart than they are long; what lies between stays.
          const std::size_t stride = count + 3;
          std::vector<double> expected(queryCount * stride);
          std::generate(expected.begin(), expected.end(), number);
          std::vector<double> sums = expected;
          for (std::size_t q = 0; q < queryCount; ++q) {
            const std::array<std::span<const double>, 1> query{vectors[q]};
            kernels::reference::AddL1Distances(query, pointers.data() + queryCount, count, &expected[q * stride]);
          }
          kernels::AddL1DistanceTile(pointers.data(), queryCount, pointers.data() + queryCount, count, length,
                                     sums.data(), stride);
          EXPECT_EQ(sums, expected);
        }
      }
    }
  });
}

TEST(FindNearestL1, FindsTheFirstOfTheNearestWhateverTheRounding) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::mt19937 random(9);
  OnEachTarget([&] {
    for (const std::size_t length : {0, 1, 63, 64, 65, 256, 300}) {
      SCOPED_TRACE(length);
      const std::vector<double> query(length);
      std::vector<double> numbers(length);
      std::generate(numbers.begin(), numbers.end(), [&] {
        return std::ldexp(1.0 + 0x1p-32 * static_cast<double>(random()), static_cast<int>(random() % 9));
      });
      // The same numbers in another order: the sums differ by their rounding alone, and every thirtieth is the last
      // one over again. The others are no match.
      std::vector<std::vector<double>> vectors;
      for (int i = 0; i < 90; ++i) {
        vectors.emplace_back(length, i % 4 == 0 ? kNaN : i % 4 == 1 ? kInfinity : 1e9);
        vectors.push_back(i % 30 == 29 ? vectors[vectors.size() - 2] : numbers);
        std::shuffle(numbers.begin(), numbers.end(), random);
      }
      std::vector<const double*> candidates;
      candidates.reserve(vectors.size());
      for (const auto& vector : vectors) {
        candidates.push_back(vector.data());
      }
      double expectedDistance = std::numeric_limits<double>::max();
      const std::size_t expected = kernels::reference::FindNearestL1(query.data(), length, candidates.data(),
                                                                     candidates.size(), expectedDistance);
      double distance = std::numeric_limits<double>::max();
      EXPECT_EQ(kernels::FindNearestL1(query.data(), length, candidates.data(), candidates.size(), distance), expected);
      EXPECT_EQ(distance, expectedDistance);
      // As near is not nearer.
      EXPECT_EQ(kernels::FindNearestL1(query.data(), length, candidates.data(), candidates.size(), distance),
                candidates.size());
      EXPECT_EQ(distance, expectedDistance);
    }
  });
}

/// The positions of a ranking by these distances, in its order, from the kernel and from the plain sort.
std::vector<int> SortedPositions(const std::vector<double>& distances) {
  std::vector<kernels::TRankEntry> entries;
  entries.reserve(distances.size());
  for (const double distance : distances) {
    entries.push_back({static_cast<std::int32_t>(entries.size()), distance});
  }
  std::vector<kernels::TRankEntry> expected = entries;
  kernels::RankSort(entries);
  kernels::reference::RankSort(expected);
  std::vector<int> positions;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i].imageIndex, expected[i].imageIndex) << i;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(entries[i].distance), std::bit_cast<std::uint64_t>(expected[i].distance));
    positions.push_back(entries[i].imageIndex);
  }
  return positions;
}

TEST(RankSort, TellsEveryTwoDistancesApartButTheTwoZeros) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kLeast = std::numeric_limits<double>::denorm_min();
  constexpr double kGreatest = std::numeric_limits<double>::max();
  EXPECT_EQ(SortedPositions({1.5, 0.0, kInfinity, -0.0, std::nextafter(1.5, 2.0), kGreatest, 0.0, kLeast, 2.5, -1.0,
                             std::nextafter(1.5, 1.0), -kInfinity, -1.5}),
            (std::vector<int>{11, 12, 9, 1, 3, 6, 7, 10, 0, 4, 8, 5, 2}));
  EXPECT_EQ(SortedPositions({3.0}), std::vector<int>{0});
  EXPECT_EQ(SortedPositions({}), std::vector<int>());
}

TEST(RankSort, EqualsThePlainStableSort) {
  std::mt19937_64 random(11);
  // Few distances and many ties; those of a search; all bits there are but those of a NaN. Each number of passes.
  for (const std::size_t count : {2, 255, 1000, 70000}) {
    std::vector<double> ties(count);
    std::vector<double> sums(count);
    std::vector<double> bits(count);
    for (std::size_t i = 0; i < count; ++i) {
      ties[i] = i % 50 == 0 ? std::numeric_limits<double>::infinity() : static_cast<double>(random() % 3);
      sums[i] = 0x1p-53 * static_cast<double>(random() >> 11);
      const auto any = std::bit_cast<double>(random());
      bits[i] = std::isnan(any) ? 0.0 : any;
    }
    for (const std::vector<double>& distances : {ties, sums, bits}) {
      SortedPositions(distances);
    }
  }
}

TEST(ByteDistances, EqualThePlainLoopOnEachTarget) {
  OnEachTarget([] {
    for (const std::size_t length : {64, 128, 256, 1 << 18}) {
      for (const std::size_t count : {0, 1, 7}) {
        SCOPED_TRACE(testing::Message() << count << " rows of " << length);
        const TBytes query = RunsOfBytes(length, 11);
        TBytes rows = RandomBytes(count * length, 12);
        if (count > 1) {
          // The largest distance there is.
          std::transform(query.begin(), query.end(), rows.begin(),
                         [](unsigned char byte) { return static_cast<unsigned char>(byte < 128 ? 255 : 0); });
        }
        std::vector<std::uint32_t> expected(count);
        std::vector<std::uint32_t> found(count);
        kernels::reference::ByteDistances(query.data(), rows.data(), length, count, expected.data());
        kernels::ByteDistances(query.data(), rows.data(), length, count, found.data());
        EXPECT_EQ(found, expected);
      }
    }
  });
}

// The same number to the last bit, or two NaNs: which NaN a sum of two gives depends on the order of the operands.
void ExpectSameBits(double found, double expected) {
  if (!std::isnan(expected)) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(found), std::bit_cast<std::uint64_t>(expected));
  } else {
    EXPECT_TRUE(std::isnan(found));
  }
}

TEST(TPackedRows, EqualThePlainLoopsToTheLastBit) {
  std::mt19937 random(10);
  const auto number = [&] {
    constexpr std::array kSpecial{0.0, -0.0, std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::infinity(), 1e300};
    return random() % 500 == 0 ? kSpecial[random() % kSpecial.size()]
                               : std::ldexp(static_cast<double>(random()) - 2e9, static_cast<int>(random() % 40) - 30);
  };
  OnEachTarget([&] {
    for (const std::size_t length : {0, 1, 2, 7, 256}) {
      for (const std::size_t count : {0, 1, 7, 8, 9, 16, 31, 32, 33, 100}) {
        SCOPED_TRACE(testing::Message() << count << " rows of " << length);
        std::vector<double> query(length);
        std::vector<double> rows(count * length);
        std::generate(query.begin(), query.end(), number);
        std::generate(rows.begin(), rows.end(), number);
        kernels::TPackedRows packed(count, length);
        for (std::size_t i = 0; i < rows.size(); ++i) {
          packed.Set(i / length, i % length, rows[i]);
        }
        std::vector<double> expected(count);
        std::vector<double> sums(packed.RoundedCount(), -1.0);
        kernels::reference::DotProducts(query.data(), length, rows.data(), count, expected.data());
        packed.DotProducts(query.data(), sums.data());
        for (std::size_t row = 0; row < count; ++row) {
          ExpectSameBits(sums[row], expected[row]);
        }
        kernels::reference::DotProductsByFours(query.data(), length, rows.data(), count, expected.data());
        packed.DotProductsByFours(query.data(), sums.data());
        for (std::size_t row = 0; row < count; ++row) {
          ExpectSameBits(sums[row], expected[row]);
        }
        kernels::reference::SquaredDistances(query.data(), length, rows.data(), count, expected.data());
        packed.SquaredDistances(query.data(), sums.data());
        for (std::size_t row = 0; row < count; ++row) {
          ExpectSameBits(sums[row], expected[row]);
        }
      }
    }
  });
}

TEST(ScaleRange, EqualsThePlainLoopToTheLastBit) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr std::array kNumbers{0.0, -0.0, 1.0, 0.1, -3.7, 1e-310, 1e308, -1e308, kInfinity, -kInfinity, kNan};
  std::mt19937 random(11);
  OnEachTarget([&] {
    for (std::size_t length = 0; length < 40; ++length) {
      std::vector<double> minimum(length);
      std::vector<double> maximum(length);
      std::vector<double> values(length);
      for (std::vector<double>* numbers : {&minimum, &maximum, &values}) {
        std::generate(numbers->begin(), numbers->end(), [&] { return kNumbers[random() % kNumbers.size()]; });
      }
      std::vector<double> expected = values;
      kernels::reference::ScaleRange(minimum.data(), maximum.data(), length, expected.data());
      kernels::ScaleRange(minimum.data(), maximum.data(), length, values.data());
      for (std::size_t i = 0; i < length; ++i) {
        ExpectSameBits(values[i], expected[i]);
      }
    }
  });
}

TEST(TPackedRows, SumProductsAndSquares) {
  constexpr std::array kQuery{1.0, -2.0, 0.5};
  kernels::TPackedRows rows(9, 3);
  for (std::size_t i = 0; i < 3; ++i) {
    rows.Set(0, i, kQuery[i]);
    rows.Set(8, i, 4.0);
  }
  std::array<double, 16> sums;
  rows.DotProducts(kQuery.data(), sums.data());
  EXPECT_EQ(sums[0], 5.25);
  EXPECT_EQ(sums[1], 0.0);
  EXPECT_EQ(sums[8], -2.0);
  rows.DotProductsByFours(kQuery.data(), sums.data());
  EXPECT_EQ(sums[0], 5.25);
  EXPECT_EQ(sums[8], -2.0);
  rows.SquaredDistances(kQuery.data(), sums.data());
  EXPECT_EQ(sums[0], 0.0);
  EXPECT_EQ(sums[1], 5.25);
  EXPECT_EQ(sums[8], 9.0 + 36.0 + 12.25);
}

}  // namespace
