// "edgehistogram": 150 numbers, each from 0 to 1: how often edges of five kinds (vertical, horizontal, 45 degrees, 135
// degrees, non-directional) occur in the parts of a picture.
//   0..4     in the whole picture
//   5..84    in each of 4 x 4 parts, row by row
//   85..149  in 13 groups of four parts: 4 columns, 4 rows, the squares top left, top right, bottom left, bottom right
//            and center
// The last two kinds are divided by 5, so that an L1 distance is a fifth of the paper's, which weighs the five numbers
// of the whole picture 5-fold. The local numbers are rounded to the standard's 3 bits before the others are made.
//
// ISO/IEC 15938-3:2002, edge histogram; C. S. Won, D. K. Park, S.-J. Park, "Efficient Use of MPEG-7 Edge Histogram
// Descriptor", ETRI Journal 24(1), 2002. The standard leaves the threshold of an edge and the enlargement of small
// pictures to the extraction; here they are 11 and a shorter side of 70, as in its reference software.

#include <cmath>
#include <utility>
#include <vector>

#include "plugins/descriptor.h"
#include "plugins/directional-edges.h"

const TDescriptor kDescriptor = {"edgehistogram", "Edges of five kinds in 4 x 4 parts, in groups of parts, and in all",
                                 150, false};

namespace {

constexpr int kParts = 16;
constexpr int kLocalBins = kParts * kEdgeKinds;
// The number that the standard's extraction aims at.
constexpr int kWantedBlocks = 1100;
constexpr std::int64_t kEdgeThreshold = 11;
constexpr int kLeastSide = 70;
/// A thread of pixels is not enlarged beyond that length, so that no picture takes hours.
constexpr int kMostEnlargedSide = 1 << 20;

/// The standard's tables, by kind of edge; 3 bits an element.
constexpr double kQuantiser[kEdgeKinds][8] = {
    {0.010867, 0.057915, 0.099526, 0.144849, 0.195573, 0.260504, 0.358031, 0.530128},
    {0.012266, 0.069934, 0.125879, 0.182307, 0.243396, 0.314563, 0.411728, 0.564319},
    {0.004193, 0.025852, 0.046860, 0.068519, 0.093286, 0.123490, 0.161505, 0.228960},
    {0.004174, 0.025924, 0.046232, 0.067163, 0.089655, 0.115391, 0.151904, 0.217745},
    {0.006778, 0.051667, 0.108650, 0.166257, 0.224226, 0.285691, 0.356375, 0.450972}};

/// The parts of each group, in the order of the result.
constexpr int kGroups[13][4] = {{0, 4, 8, 12},  {1, 5, 9, 13},    {2, 6, 10, 14},   {3, 7, 11, 15}, {0, 1, 2, 3},
                                {4, 5, 6, 7},   {8, 9, 10, 11},   {12, 13, 14, 15}, {0, 1, 4, 5},   {2, 3, 6, 7},
                                {8, 9, 12, 13}, {10, 11, 14, 15}, {5, 6, 9, 10}};

std::int64_t IntegerSquareRoot(std::int64_t number) {
  // The root of a double may be off by one for large numbers; the loops put that right.
  auto root = static_cast<std::int64_t>(std::sqrt(static_cast<double>(number)));
  while (root * root > number) {
    --root;
  }
  while ((root + 1) * (root + 1) <= number) {
    ++root;
  }
  return root;
}

/// A row of the picture, enlarged numerator / denominator times, bilinear, the target pixel (i, j) at (i, j) *
/// denominator / numerator, rounded to whole gray levels.
void EnlargeRow(const TPicture& picture, std::int64_t numerator, std::int64_t denominator, int y,
                std::vector<unsigned char>& row) {
  const std::int64_t top = std::min<std::int64_t>(y * denominator / numerator, picture.height - 1);
  const std::int64_t below = y * denominator % numerator;
  const unsigned char* upper = picture.Row(static_cast<int>(top));
  const unsigned char* lower = picture.Row(std::min(static_cast<int>(top) + 1, picture.height - 1));
  const std::int64_t whole = numerator * numerator;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::int64_t position = static_cast<std::int64_t>(i) * denominator;
    const std::int64_t x = std::min<std::int64_t>(position / numerator, picture.width - 1);
    const std::int64_t next = std::min<std::int64_t>(x + 1, picture.width - 1);
    const std::int64_t right = position % numerator;
    const std::int64_t sum = (numerator - below) * ((numerator - right) * upper[x] + right * upper[next]) +
                             below * ((numerator - right) * lower[x] + right * lower[next]);
    // In whole numbers throughout: the same bytes on every machine.
    row[i] = static_cast<unsigned char>((sum + whole / 2) / whole);
  }
}

/// Counts the blocks and the edges of each part. The rows come one after the other, of the picture itself or of its
/// enlargement.
class TBlockCounter {
 public:
  TBlockCounter(int theWidth, int theHeight)
      : width(theWidth),
        height(theHeight),
        side(BlockSide(theWidth, theHeight)),
        quarters(static_cast<std::size_t>(theWidth / side)) {}

  void AddRow(const unsigned char* row) {
    const int half = side / 2;
    // The upper two quarters of each block, or the lower two.
    const std::size_t below = y % side < half ? 0 : 2;
    for (TQuarters& block : quarters) {
      for (std::size_t quarter = below; quarter < below + 2; ++quarter) {
        int sum = 0;
        for (int x = 0; x < half; ++x) {
          sum += *row++;
        }
        block[quarter] += sum;
      }
    }
    if (++y % side == 0) {
      EndBlocks();
    }
  }

  /// The local bins: of all blocks of a part, the share of those with an edge of that kind.
  void Write(std::span<double> local) const {
    for (std::size_t i = 0; i < kLocalBins; ++i) {
      const std::int64_t all = blocks[i / kEdgeKinds];
      local[i] = all == 0 ? 0.0 : static_cast<double>(edges[i]) / static_cast<double>(all);
    }
  }

 private:
  static int BlockSide(int width, int height) {
    const std::int64_t pixels = std::int64_t{width} * height / kWantedBlocks;
    return static_cast<int>(std::max<std::int64_t>(2, IntegerSquareRoot(pixels) / 2 * 2));
  }

  void EndBlocks() {
    const std::int64_t row = std::int64_t{4} * (y - side) / height;
    const std::int64_t pixels = std::int64_t{side / 2} * (side / 2);
    for (std::size_t i = 0; i < quarters.size(); ++i) {
      // By the left edge of the block: a block that lies across a border belongs to the part where it begins.
      const auto part = static_cast<std::size_t>(4 * row + 4 * static_cast<std::int64_t>(i) * side / width);
      const auto strengths = SquaredStrengths(quarters[i]);
      // The first of equally strong ones, in the order of TEdgeKind.
      const auto strongest = std::max_element(strengths.begin(), strengths.end());
      ++blocks[part];
      // Sums instead of means, hence the threshold times the pixels of a quarter; squares, hence squared.
      if (*strongest >= kEdgeThreshold * kEdgeThreshold * pixels * pixels) {
        ++edges[part * kEdgeKinds + static_cast<std::size_t>(strongest - strengths.begin())];
      }
      quarters[i] = {};
    }
  }

  const int width;
  const int height;
  const int side;
  int y = 0;
  std::vector<TQuarters> quarters;
  std::array<std::int64_t, kParts> blocks = {};
  std::array<std::int64_t, kLocalBins> edges = {};
};

void CountBlocks(const TPicture& picture, std::span<double> local) {
  const auto [shorter, longer] = std::minmax(picture.width, picture.height);
  // A ratio of whole numbers, with which every machine comes to the same size.
  std::int64_t numerator = kLeastSide;
  std::int64_t denominator = shorter;
  if (numerator * longer > denominator * kMostEnlargedSide) {
    numerator = kMostEnlargedSide;
    denominator = longer;
  }
  // Large enough as it is.
  if (numerator <= denominator) {
    TBlockCounter counter(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
      counter.AddRow(picture.Row(y));
    }
    counter.Write(local);
    return;
  }
  const auto enlarge = [&](int size) {
    // Rounded to the nearest.
    return static_cast<int>((2 * numerator * size + denominator) / (2 * denominator));
  };
  TBlockCounter counter(enlarge(picture.width), enlarge(picture.height));
  std::vector<unsigned char> row(static_cast<std::size_t>(enlarge(picture.width)));
  for (int y = 0; y < enlarge(picture.height); ++y) {
    EnlargeRow(picture, numerator, denominator, y, row);
    counter.AddRow(row.data());
  }
  counter.Write(local);
}

double Quantise(double share, const double (&table)[8]) {
  int i = 0;
  // The nearest level; halfway the lower one.
  while (i < 7 && share > (table[i] + table[i + 1]) / 2.0) {
    ++i;
  }
  return table[i];
}

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  std::array<double, kLocalBins> local;
  CountBlocks(picture, local);
  for (std::size_t i = 0; i < kLocalBins; ++i) {
    local[i] = Quantise(local[i], kQuantiser[i % kEdgeKinds]);
    result[i % kEdgeKinds] += local[i] / kParts;
    result[kEdgeKinds + i] = local[i] / 5.0;
  }
  std::size_t next = kEdgeKinds + kLocalBins;
  for (const auto& group : kGroups) {
    for (std::size_t kind = 0; kind < kEdgeKinds; ++kind) {
      double sum = 0.0;
      for (const int part : group) {
        sum += local[static_cast<std::size_t>(part * kEdgeKinds) + kind];
      }
      result[next++] = sum / 4.0 / 5.0;
    }
  }
}
