// "tamura": 512 numbers with a sum of 1: the joint histogram of three textural features over all pixels, element 64 x
// direction + 8 x coarseness + contrast.
//   coarseness  k = 0..5: the windows of 2^k x 2^k pixels, side by side, whose means differ most, in bins of 5/8
//   contrast    deviation / fourth root of the kurtosis in 11 x 11 pixels, 0..128 in bins of 16
//   direction   angle of the gradient, 0..pi in bins of pi/8; 0 where the gray levels do not change sideways
// Fixed ranges, so that two pictures are binned alike; windows are cut at the border of the picture.
//
// H. Tamura, S. Mori, T. Yamawaki, "Textural Features Corresponding to Visual Perception", IEEE Trans. SMC 8(6), 1978;
// the histogram: T. Deselaers, D. Keysers, H. Ney, "Features for Image Retrieval: an Experimental Comparison",
// Information Retrieval 11, 2008. Those authors take the three from each color and average them; here they are taken
// from the gray levels, since the mean of two angles has no meaning.

#include <array>
#include <cmath>
#include <vector>

#include "plugins/descriptor.h"
#include "plugins/tamura-rows.h"

const TDescriptor kDescriptor = {"tamura", "Joint histogram of coarseness, contrast and direction", 512, false};

namespace {

constexpr int kMostCoarse = rows::kMostCoarse;
/// Half of the widest window.
constexpr int kReach = 1 << (kMostCoarse - 1);
/// Rows that are kept: at least as many as are needed at once.
constexpr int kRing = 64;
static_assert(kRing >= 2 * kReach + 1);
/// The last rows of a plane.
template <typename T>
class TRing {
 public:
  explicit TRing(int theWidth) : width(static_cast<std::size_t>(theWidth)), cells(width * kRing) {}
  T* Row(int y) { return cells.data() + static_cast<std::size_t>(y % kRing) * width; }

 private:
  std::size_t width;
  std::vector<T> cells;
};

/// The coarseness of each pixel, row by row.
class TCoarseness {
 public:
  explicit TCoarseness(const TPicture& thePicture)
      : picture(thePicture),
        sums(thePicture.width + 1),
        means(kMostCoarse, TRing<float>(thePicture.width)),
        keys(static_cast<std::size_t>(thePicture.width)) {}

  /// Row `y`, with k as rows::JointBins takes it; to be called for 0, 1, 2 and so on.
  const std::int32_t* Process(int y) {
    // A difference of 0 and the tag of k = 0: a flat picture is of the finest grain.
    std::fill(keys.begin(), keys.end(), kMostCoarse);
    for (int k = 1; k <= kMostCoarse; ++k) {
      const int half = 1 << (k - 1);
      TRing<float>& plane = means[static_cast<std::size_t>(k - 1)];
      for (int& next = nextMeans[static_cast<std::size_t>(k - 1)]; next <= std::min(y + half, picture.height - 1);
           ++next) {
        ComputeMeans(k, next, plane.Row(next));
      }
      // A position outside the picture has no mean, and the difference is 0.
      const int window = 2 * half;
      if (picture.width > window) {
        // The windows to the left and right of each pixel, then those above and below.
        const float* row = plane.Row(y);
        rows::KeepGreatest(row + window, row, kMostCoarse - k, keys.data() + half, picture.width - window);
      }
      if (y >= half && y + half < picture.height) {
        rows::KeepGreatest(plane.Row(y + half), plane.Row(y - half), kMostCoarse - k, keys.data(), picture.width);
      }
    }
    return keys.data();
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
    const int height = bottom - top;
    const auto sum = [&](int x) {
      const int first = std::max(0, x - half);
      const int end = std::min(picture.width, x + half);
      // Windows that the border cuts have fewer pixels, and their mean is over these.
      return static_cast<float>(static_cast<std::int32_t>(lower[end] - upper[end] - (lower[first] - upper[first]))) /
             static_cast<float>((end - first) * height);
    };
    const bool isWhole = height == 2 * half && picture.width > 2 * half;
    const int left = isWhole ? half : picture.width;
    const int right = isWhole ? picture.width - half : picture.width;
    for (int x = 0; x < left; ++x) {
      row[x] = sum(x);
    }
    // Whole windows: a product with a power of two is as exact as the division.
    rows::WindowMeans(lower + left - half, upper + left - half, 2 * half, 1.0f / static_cast<float>(4 * half * half),
                      row + left, right - left);
    for (int x = right; x < picture.width; ++x) {
      row[x] = sum(x);
    }
  }

  const TPicture& picture;
  TRing<std::uint32_t> sums;
  int nextSums = 0;
  std::vector<TRing<float>> means;
  std::array<int, kMostCoarse> nextMeans = {};
  /// The greatest differences and, as their tags, the smaller k with the larger numbers, so that of equal differences
  /// the first wins. Between whole windows the bits in the place of the tag are 0 anyway.
  std::vector<std::int32_t> keys;
};

/// The contrast of each pixel, row by row. Everything is a whole number until the last root, so that a window whose
/// contrast is the border of a bin falls into the upper one. Of gray level - 128, the sums over a window of the first
/// three powers fit into 32 bits; running sums may wrap around, their differences come out right.
class TContrast {
 public:
  explicit TContrast(const TPicture& thePicture)
      : picture(thePicture),
        columns(static_cast<std::size_t>(thePicture.width)),
        running(static_cast<std::size_t>(thePicture.width) + 1),
        squares(static_cast<std::size_t>(thePicture.width)),
        rest(squares.size()),
        variances(squares.size()),
        moments(squares.size()),
        restBins(squares.size()) {
    for (int y = 0; y < std::min(kRadius, thePicture.height); ++y) {
      AddRow(y, 1);
    }
  }

  /// The bins of row `y`; to be called for 0, 1, 2 and so on.
  void Process(int y, unsigned char* bins) {
    if (y + kRadius < picture.height) {
      AddRow(y + kRadius, 1);
    }
    // Rows enter and leave the sums over columns, so that a window costs the same whatever its size.
    if (y > kRadius) {
      AddRow(y - kRadius - 1, -1);
    }
    SumUp();
    const int height = std::min(picture.height, y + kRadius + 1) - std::max(0, y - kRadius);
    const int left = std::min(kRadius, picture.width);
    const int right = std::max(left, picture.width - kRadius);
    const auto describeCut = [&](int x) {
      const auto begin = static_cast<std::size_t>(std::max(0, x - kRadius));
      const auto end = static_cast<std::size_t>(std::min(picture.width, x + kRadius + 1));
      const std::int64_t n = height * static_cast<std::int64_t>(end - begin);
      const std::int64_t second = static_cast<std::int32_t>(running.second[end] - running.second[begin]);
      const std::int64_t exact = n * second - First(begin, end) * First(begin, end);
      const auto variance = static_cast<double>(exact);
      const auto moment = static_cast<double>(Moment(begin, end, n, exact));
      bins[x] = 0;
      if (exact > 0) {
        rows::ContrastBins(&variance, &moment, static_cast<double>(n), &bins[x], 1);
      }
    };
    for (int x = 0; x < left; ++x) {
      describeCut(x);
    }
    // Whole rows of a window, several at once: the contrast never exceeds the deviation, so nothing is left to do where
    // that is below 16.
    constexpr int kSide = 2 * kRadius + 1;
    const int n = height * kSide;
    rows::Variances(running.first.data() + left - kRadius, running.second.data() + left - kRadius, height, kSide,
                    squares.data() + left, right - left);
    // Without a branch, which nobody could predict: what is not counted is overwritten.
    std::size_t count = 0;
    for (int x = left; x < right; ++x) {
      bins[x] = 0;
      rest[count] = x;
      count += squares[static_cast<std::size_t>(x)] < 256 * n * n ? 0 : 1;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const auto begin = static_cast<std::size_t>(rest[i] - kRadius);
      const std::int32_t variance = squares[static_cast<std::size_t>(rest[i])];
      variances[i] = variance;
      moments[i] = static_cast<double>(Moment(begin, begin + kSide, n, variance));
    }
    rows::ContrastBins(variances.data(), moments.data(), n, restBins.data(), static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) {
      bins[rest[i]] = restBins[i];
    }
    for (int x = right; x < picture.width; ++x) {
      describeCut(x);
    }
  }

 private:
  static constexpr int kRadius = 5;

  struct TPowerSums {
    explicit TPowerSums(std::size_t count) : first(count), second(count), third(count), fourth(count) {}
    std::vector<std::uint32_t> first;
    std::vector<std::uint32_t> second;
    std::vector<std::uint32_t> third;
    std::vector<std::int64_t> fourth;
  };

  void AddRow(int y, int sign) {
    rows::AddPowers(picture.Row(y), sign,
                    {columns.first.data(), columns.second.data(), columns.third.data(), columns.fourth.data()},
                    picture.width);
  }

  void SumUp() {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint32_t third = 0;
    std::int64_t fourth = 0;
    const auto count = static_cast<std::size_t>(picture.width);
    for (std::size_t x = 0; x < count; ++x) {
      running.first[x + 1] = first += columns.first[x];
      running.second[x + 1] = second += columns.second[x];
      running.third[x + 1] = third += columns.third[x];
    }
    for (std::size_t x = 0; x < count; ++x) {
      running.fourth[x + 1] = fourth += columns.fourth[x];
    }
  }

  std::int64_t First(std::size_t begin, std::size_t end) const {
    return static_cast<std::int32_t>(running.first[end] - running.first[begin]);
  }

  /// n^4 times the fourth central moment of n pixels, from n^2 times their variance: whole numbers below 2^58.
  std::int64_t Moment(std::size_t begin, std::size_t end, std::int64_t n, std::int64_t variance) const {
    const std::int64_t first = First(begin, end);
    const std::int64_t third = static_cast<std::int32_t>(running.third[end] - running.third[begin]);
    const std::int64_t fourth = running.fourth[end] - running.fourth[begin];
    return n * n * (n * fourth - 4 * first * third) + 3 * first * first * (2 * variance + first * first);
  }

  const TPicture& picture;
  /// Over the rows of the window.
  TPowerSums columns;
  /// Over these, from the left.
  TPowerSums running;
  std::vector<std::int32_t> squares;
  /// The columns that are left, and what is known of them.
  std::vector<int> rest;
  std::vector<double> variances;
  std::vector<double> moments;
  std::vector<unsigned char> restBins;
};

/// The direction of each pixel of row `y`, by Sobel's differences; the edge pixels are repeated around the picture.
class TDirection {
 public:
  explicit TDirection(const TPicture& thePicture)
      : picture(thePicture), smooth(static_cast<std::size_t>(thePicture.width + 2)), change(smooth.size()) {}

  void Process(int y, std::int16_t* bins) {
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
    rows::Directions(smooth.data() + 1, change.data() + 1, bins, picture.width);
  }

 private:
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
  std::vector<unsigned char> contrastBins(width);
  std::vector<std::int16_t> directionBins(width);
  std::vector<std::uint16_t> elements(width);
  // Several histograms: neighbors often fall into the same bin, and each would wait for the one before.
  std::array<std::array<std::uint64_t, 512>, 4> counts = {};
  for (int y = 0; y < picture.height; ++y) {
    contrast.Process(y, contrastBins.data());
    direction.Process(y, directionBins.data());
    rows::JointBins(directionBins.data(), coarseness.Process(y), contrastBins.data(), elements.data(), picture.width);
    std::size_t x = 0;
    for (; x + counts.size() <= width; x += counts.size()) {
      ++counts[0][elements[x]];
      ++counts[1][elements[x + 1]];
      ++counts[2][elements[x + 2]];
      ++counts[3][elements[x + 3]];
    }
    for (; x < width; ++x) {
      ++counts[0][elements[x]];
    }
  }
  const double pixels = static_cast<double>(picture.width) * picture.height;
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = static_cast<double>(counts[0][i] + counts[1][i] + counts[2][i] + counts[3][i]) / pixels;
  }
}
