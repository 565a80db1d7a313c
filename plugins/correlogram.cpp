// "correlogram": 256 numbers, each from 0 to 1: for each of 64 colors and the distances 1, 3, 5 and 7 (element 4 x
// color + 0..3) how likely a pixel at just that distance from a pixel of the color has it too. The color is 16 x red
// + 4 x green + blue with four levels each; the distance is the greater of the differences in x and y. Pixels beyond
// the border count as having another color.
//
// J. Huang, S. R. Kumar, M. Mitra, W.-J. Zhu, R. Zabih, "Image Indexing Using Color Correlograms", CVPR 1997: the
// auto-correlogram. The order of the channels is ours.

#include <array>
#include <vector>

#include "plugins/descriptor.h"

const TDescriptor kDescriptor = {"correlogram", "How likely pixels of 64 colors recur at the distances 1, 3, 5 and 7",
                                 256, true};

namespace {

constexpr std::size_t kColors = 64;
constexpr std::array<int, 4> kDistances = {1, 3, 5, 7};
// The largest distance.
constexpr int kMargin = 7;
// A 65th color, which no pixel has.
constexpr unsigned char kOutside = kColors;

/// The colors of a picture with a margin around it, so that no neighbor needs a test for the border.
class TColorPlane {
 public:
  explicit TColorPlane(const TPicture& picture)
      : stride(picture.width + 2 * kMargin),
        cells(static_cast<std::size_t>(stride) * static_cast<std::size_t>(picture.height + 2 * kMargin), kOutside) {
    for (int y = 0; y < picture.height; ++y) {
      const unsigned char* pixel = picture.Row(y);
      unsigned char* cell = cells.data() + (y + kMargin) * stride + kMargin;
      for (int x = 0; x < picture.width; ++x, pixel += 3) {
        // The two highest bits of each channel.
        cell[x] = static_cast<unsigned char>((pixel[0] >> 6) << 4 | (pixel[1] >> 6) << 2 | pixel[2] >> 6);
      }
    }
  }

  /// Row `y` of the picture, which may be up to kMargin rows outside; so may the columns.
  const unsigned char* Row(int y) const { return cells.data() + (y + kMargin) * stride + kMargin; }

 private:
  std::ptrdiff_t stride;
  std::vector<unsigned char> cells;
};

void CountEqual(const unsigned char* row, const unsigned char* neighbors, unsigned char* counts, int width) {
  for (int x = 0; x < width; ++x) {
    counts[x] = static_cast<unsigned char>(counts[x] + (row[x] == neighbors[x] ? 1 : 0));
  }
}

/// For each pixel of a row, how many of those at the distance that come after it have its color. A pair of pixels is
/// counted at the earlier one, which is half of the ring: 28 at most.
void CountRow(const TColorPlane& plane, int y, int distance, std::vector<unsigned char>& counts) {
  const auto width = static_cast<int>(counts.size());
  std::fill(counts.begin(), counts.end(), static_cast<unsigned char>(0));
  const unsigned char* row = plane.Row(y);
  // The right-hand neighbor in the same row, then the two sides of the ring in the rows between, then its whole lower
  // edge.
  CountEqual(row, row + distance, counts.data(), width);
  for (int dy = 1; dy < distance; ++dy) {
    CountEqual(row, plane.Row(y + dy) - distance, counts.data(), width);
    CountEqual(row, plane.Row(y + dy) + distance, counts.data(), width);
  }
  for (int dx = -distance; dx <= distance; ++dx) {
    CountEqual(row, plane.Row(y + distance) + dx, counts.data(), width);
  }
}

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  const TColorPlane plane(picture);
  std::array<std::uint64_t, kColors> pixels = {};
  std::array<std::array<std::uint64_t, kDistances.size()>, kColors> pairs = {};
  std::array<std::vector<unsigned char>, kDistances.size()> counts;
  counts.fill(std::vector<unsigned char>(static_cast<std::size_t>(picture.width)));
  for (int y = 0; y < picture.height; ++y) {
    for (std::size_t i = 0; i < kDistances.size(); ++i) {
      CountRow(plane, y, kDistances[i], counts[i]);
    }
    const unsigned char* row = plane.Row(y);
    for (std::size_t x = 0; x < counts[0].size(); ++x) {
      ++pixels[row[x]];
      for (std::size_t i = 0; i < kDistances.size(); ++i) {
        pairs[row[x]][i] += counts[i][x];
      }
    }
  }
  for (std::size_t color = 0; color < kColors; ++color) {
    for (std::size_t i = 0; i < kDistances.size() && pixels[color] > 0; ++i) {
      // Each pair counts from both of its ends.
      result[kDistances.size() * color + i] =
          static_cast<double>(2 * pairs[color][i]) / (8.0 * kDistances[i] * static_cast<double>(pixels[color]));
    }
  }
}
