// "tamura": 512 numbers with a sum of 1: the joint histogram of three textural features over all pixels, element 64 x
// direction + 8 x coarseness + contrast.
//   coarseness  k = 0..5: the windows of 2^k x 2^k pixels, side by side, whose means differ most, in bins of 5/8
//   contrast    deviation / fourth root of the kurtosis in 11 x 11 pixels, 0..128 in bins of 16
//   direction   angle of the gradient, 0..pi in bins of pi/8; 0 where the gray levels do not change sideways
// Fixed ranges, so that two pictures are binned alike; windows are cut at the border of the picture.
//
// H. Tamura, S. Mori, T. Yamawaki, "Textural Features Corresponding to Visual Perception", IEEE Trans. SMC 8(6), 1978;
// the histogram: T. Deselaers, D. Keysers, H. Ney, "Features for Image Retrieval: an Experimental Comparison",
// Information Retrieval 11, 2008. Those authors take the three from each colour and average them; here they are taken
// from the gray levels, since the mean of two angles has no meaning.

#include <array>
#include <cmath>
#include <vector>

#include "plugins/descriptor.h"

const TDescriptor kDescriptor = {"tamura", "Joint histogram of coarseness, contrast and direction", 512, false};

namespace {

constexpr int kMostCoarse = 5;
/// Half of the widest window.
constexpr int kReach = 1 << (kMostCoarse - 1);
/// Rows that are kept: more than the 2 x kReach + 1 that are needed at once.
constexpr int kRing = 64;
/// The bin of each k: floor(8 k / 5), 7 at most.
constexpr std::array<unsigned char, kMostCoarse + 1> kCoarsenessBins = {0, 1, 3, 4, 6, 7};

/// The last rows of a plane.
template <typename T>
class TRing {
 public:
  explicit TRing(int width) : width(static_cast<std::size_t>(width)), cells(this->width * kRing) {}
  T* Row(int y) { return cells.data() + static_cast<std::size_t>(y % kRing) * width; }

 private:
  std::size_t width;
  std::vector<T> cells;
};

/// The coarseness of each pixel, row by row.
class TCoarseness {
 public:
  explicit TCoarseness(const TPicture& picture)
      : picture(picture),
        sums(picture.width + 1),
        difference(static_cast<std::size_t>(picture.width + 1 + 2 * kReach)),
        means(kMostCoarse, TRing<float>(picture.width)),
        strongest(static_cast<std::size_t>(picture.width)),
        winners(strongest.size()) {}

  /// The bins of row `y`; to be called for 0, 1, 2 and so on.
  void Process(int y, unsigned char* bins) {
    std::fill(strongest.begin(), strongest.end(), 0.0f);
    std::fill(winners.begin(), winners.end(), 0);
    for (int k = 1; k <= kMostCoarse; ++k) {
      const int half = 1 << (k - 1);
      TRing<float>& plane = means[static_cast<std::size_t>(k - 1)];
      for (int& next = nextMeans[static_cast<std::size_t>(k - 1)]; next <= std::min(y + half, picture.height - 1);
           ++next) {
        ComputeMeans(k, next, plane.Row(next));
      }
      // A position outside the picture has no mean, and the difference is 0.
      if (picture.width > 2 * half) {
        const float* row = plane.Row(y);
        Compare(row + 2 * half, row, k, half, picture.width - 2 * half);
      }
      if (y >= half && y + half < picture.height) {
        Compare(plane.Row(y + half), plane.Row(y - half), k, 0, picture.width);
      }
    }
    for (std::size_t x = 0; x < winners.size(); ++x) {
      bins[x] = kCoarsenessBins[static_cast<std::size_t>(winners[x])];
    }
  }

 private:
  /// Row y of the sums: over all pixels above row y and left of a column. They may wrap around; the sums over windows
  /// come out right.
  const std::uint32_t* Sums(int y) {
    for (; nextSums <= y; ++nextSums) {
      std::uint32_t* row = sums.Row(nextSums);
      if (nextSums == 0) {
        std::fill(row, row + picture.width + 1, 0u);
        continue;
      }
      const std::uint32_t* above = sums.Row(nextSums - 1);
      const unsigned char* pixels = picture.Row(nextSums - 1);
      std::uint32_t sum = 0;
      row[0] = 0;
      for (int x = 0; x < picture.width; ++x) {
        sum += pixels[x];
        row[x + 1] = above[x + 1] + sum;
      }
    }
    return sums.Row(y);
  }

  /// The means over x - 2^(k-1) .. x + 2^(k-1) - 1 and the same rows.
  void ComputeMeans(int k, int y, float* row) {
    const int half = 1 << (k - 1);
    const int top = std::max(0, y - half);
    const int bottom = std::min(picture.height, y + half);
    const std::uint32_t* lower = Sums(bottom);
    const std::uint32_t* upper = Sums(top);
    std::uint32_t* middle = difference.data() + kReach;
    for (int x = 0; x <= picture.width; ++x) {
      middle[x] = lower[x] - upper[x];
    }
    std::fill(middle - half, middle, middle[0]);
    std::fill(middle + picture.width + 1, middle + picture.width + 1 + half, middle[picture.width]);
    const int rows = bottom - top;
    const auto mean = [&](int x) {
      const int columns = std::min(picture.width, x + half) - std::max(0, x - half);
      return static_cast<float>(static_cast<std::int32_t>(middle[x + half] - middle[x - half])) /
             static_cast<float>(columns * rows);
    };
    const int left = std::min(half, picture.width);
    const int right = rows == 2 * half ? std::max(left, picture.width - half + 1) : left;
    for (int x = 0; x < left; ++x) {
      row[x] = mean(x);
    }
    // Whole windows: a product with a power of two is as exact as the division.
    const float share = 1.0f / static_cast<float>(4 * half * half);
    for (int x = left; x < right; ++x) {
      row[x] = static_cast<float>(static_cast<std::int32_t>(middle[x + half] - middle[x - half])) * share;
    }
    for (int x = right; x < picture.width; ++x) {
      row[x] = mean(x);
    }
  }

  /// Notes k where two means differ by more than any before.
  void Compare(const float* ahead, const float* behind, int k, int begin, int count) {
    float* most = strongest.data() + begin;
    std::int32_t* winner = winners.data() + begin;
    for (int x = 0; x < count; ++x) {
      const float change = std::fabs(ahead[x] - behind[x]);
      const bool isMore = change > most[x];
      winner[x] = isMore ? k : winner[x];
      most[x] = isMore ? change : most[x];
    }
  }

  const TPicture& picture;
  TRing<std::uint32_t> sums;
  int nextSums = 0;
  std::vector<std::uint32_t> difference;
  std::vector<TRing<float>> means;
  std::array<int, kMostCoarse> nextMeans = {};
  std::vector<float> strongest;
  std::vector<std::int32_t> winners;
};

/// The contrast of each pixel, row by row. Everything is a whole number until the last root, so that a window whose
/// contrast is the border of a bin falls into the upper one.
class TContrast {
 public:
  explicit TContrast(const TPicture& picture)
      : picture(picture), columns(static_cast<std::size_t>(picture.width + 2 * kMargin)) {
    for (int y = 0; y < std::min(kRadius, picture.height); ++y) {
      AddRow(y, 1);
    }
  }

  /// The bins of row `y`; to be called for 0, 1, 2 and so on.
  void Process(int y, unsigned char* bins) {
    if (y + kRadius < picture.height) {
      AddRow(y + kRadius, 1);
    }
    if (y > kRadius) {
      AddRow(y - kRadius - 1, -1);
    }
    const int rows = std::min(picture.height, y + kRadius + 1) - std::max(0, y - kRadius);
    TSums window;
    for (int x = 0; x < kRadius; ++x) {
      window.Add(columns[static_cast<std::size_t>(std::min(x, picture.width) + kMargin)]);
    }
    for (int x = 0; x < picture.width; ++x) {
      window.Add(columns[static_cast<std::size_t>(x + kMargin + kRadius)]);
      window.Subtract(columns[static_cast<std::size_t>(x + kMargin - kRadius - 1)]);
      const int count = rows * (std::min(picture.width, x + kRadius + 1) - std::max(0, x - kRadius));
      bins[x] = Bin(window, count);
    }
  }

 private:
  static constexpr int kRadius = 5;
  static constexpr int kMargin = kRadius + 1;

  /// Of the first four powers of gray level - 128.
  struct TSums {
    std::int64_t first = 0;
    std::int64_t second = 0;
    std::int64_t third = 0;
    std::int64_t fourth = 0;

    void Add(const TSums& other) {
      first += other.first;
      second += other.second;
      third += other.third;
      fourth += other.fourth;
    }
    void Subtract(const TSums& other) {
      first -= other.first;
      second -= other.second;
      third -= other.third;
      fourth -= other.fourth;
    }
  };

  void AddRow(int y, int sign) {
    const unsigned char* pixel = picture.Row(y);
    TSums* column = columns.data() + kMargin;
    for (int x = 0; x < picture.width; ++x) {
      const int value = pixel[x] - 128;
      const int square = value * value;
      column[x].first += sign * value;
      column[x].second += sign * square;
      column[x].third += sign * value * square;
      column[x].fourth += std::int64_t{sign} * square * square;
    }
  }

  /// The contrast is variance / (fourth central moment)^(1/4). With n pixels, n^2 times the variance and n^4 times the
  /// moment are whole numbers below 2^58.
  static unsigned char Bin(const TSums& sums, std::int64_t n) {
    const std::int64_t squaredFirst = sums.first * sums.first;
    const std::int64_t variance = n * sums.second - squaredFirst;
    // The contrast never exceeds the deviation.
    if (variance < 256 * n * n) {
      return 0;
    }
    const std::int64_t moment = n * n * (n * sums.fourth - 4 * sums.first * sums.third) +
                                3 * squaredFirst * (2 * n * sums.second - squaredFirst);
    const auto exact = static_cast<double>(variance);
    const double squaredBin =
        exact * exact / (256.0 * static_cast<double>(n * n) * std::sqrt(static_cast<double>(moment)));
    unsigned char bin = 0;
    while (bin < 7 && squaredBin >= (bin + 1) * (bin + 1)) {
      ++bin;
    }
    return bin;
  }

  const TPicture& picture;
  /// Sums over the rows of the window, with zeros around them.
  std::vector<TSums> columns;
};

/// The direction of each pixel of row `y`, by Sobel's differences; the edge pixels are repeated around the picture.
class TDirection {
 public:
  explicit TDirection(const TPicture& picture)
      : picture(picture), smooth(static_cast<std::size_t>(picture.width + 2)), change(smooth.size()) {}

  void Process(int y, unsigned char* bins) {
    const unsigned char* upper = picture.Row(std::max(0, y - 1));
    const unsigned char* row = picture.Row(y);
    const unsigned char* lower = picture.Row(std::min(picture.height - 1, y + 1));
    for (std::size_t x = 0; x + 2 < smooth.size(); ++x) {
      smooth[x + 1] = static_cast<std::int16_t>(upper[x] + 2 * row[x] + lower[x]);
      change[x + 1] = static_cast<std::int16_t>(upper[x] - lower[x]);
    }
    for (std::vector<std::int16_t>* values : {&smooth, &change}) {
      values->front() = (*values)[1];
      values->back() = (*values)[values->size() - 2];
    }
    const std::int16_t* s = smooth.data() + 1;
    const std::int16_t* c = change.data() + 1;
    for (int x = 0; x < picture.width; ++x) {
      bins[x] = static_cast<unsigned char>(Bin(static_cast<std::int16_t>(s[x + 1] - s[x - 1]),
                                               static_cast<std::int16_t>(c[x - 1] + 2 * c[x] + c[x + 1])));
    }
  }

 private:
  /// floor(8 / pi x (atan(vertical / horizontal) + pi / 2)). Only the slopes 0 and 1 can fall on the border of a bin.
  static std::int16_t Bin(std::int16_t horizontal, std::int16_t vertical) {
    const auto width = static_cast<std::int16_t>(horizontal < 0 ? -horizontal : horizontal);
    const auto rise = static_cast<std::int16_t>(horizontal < 0 ? -vertical : vertical);
    const auto height = static_cast<std::int16_t>(rise < 0 ? -rise : rise);
    const bool isUp = rise >= 0;
    // floor(tan(pi / 8) x width), for the 1020 widths that there are; tan(3 pi / 8) is greater by 2.
    const auto shallow =
        static_cast<std::int16_t>((static_cast<std::uint32_t>(static_cast<std::uint16_t>(width)) * 27146u) >> 16);
    const int steps =
        (height > shallow ? 1 : 0) + (height > width - (isUp ? 1 : 0) ? 1 : 0) + (height > shallow + 2 * width ? 1 : 0);
    return static_cast<std::int16_t>(width == 0 ? 0 : (isUp ? 4 + steps : 3 - steps));
  }

  const TPicture& picture;
  std::vector<std::int16_t> smooth;
  std::vector<std::int16_t> change;
};

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  TCoarseness coarseness(picture);
  TContrast contrast(picture);
  TDirection direction(picture);
  const auto width = static_cast<std::size_t>(picture.width);
  std::vector<unsigned char> coarsenessBins(width);
  std::vector<unsigned char> contrastBins(width);
  std::vector<unsigned char> directionBins(width);
  std::array<std::uint64_t, 512> counts = {};
  for (int y = 0; y < picture.height; ++y) {
    coarseness.Process(y, coarsenessBins.data());
    contrast.Process(y, contrastBins.data());
    direction.Process(y, directionBins.data());
    for (std::size_t x = 0; x < width; ++x) {
      ++counts[std::size_t{64} * directionBins[x] + std::size_t{8} * coarsenessBins[x] + contrastBins[x]];
    }
  }
  const double pixels = static_cast<double>(picture.width) * picture.height;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    result[i] = static_cast<double>(counts[i]) / pixels;
  }
}
