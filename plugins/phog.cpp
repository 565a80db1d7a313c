// "phog": 420 numbers with a sum of 1, or zeros where there is no edge: pyramid of histograms of oriented gradients.
// The gradients on the edges of a picture vote with their magnitudes for one of 20 orientations over 180 degrees, in
// the whole picture (0..19), in 2 x 2 cells (20..99) and in 4 x 4 (100..419); the cells of a level stand column by
// column. Bin 10 of 20 holds the edges that stand upright.
//
// A. Bosch, A. Zisserman, X. Munoz, "Representing Shape with a Spatial Pyramid Kernel", CIVR 2007. The gradient is that
// of central differences, as in the authors' program; the paper has Sobel's. Cells are as equal as can be where the
// sides are no multiples of 4; the authors leave the rest out.

#include <array>
#include <cmath>
#include <numbers>

#include "plugins/canny.h"
#include "plugins/descriptor.h"

const TDescriptor kDescriptor = {"phog", "Orientations of edges in a pyramid of 1, 4 and 16 cells", 420, false};

namespace {

constexpr std::size_t kOrientations = 20;
// A side of the finest level.
constexpr std::size_t kCells = 4;
// Behind 1 cell, and behind 1 + 4.
constexpr std::size_t kLevelBegin[3] = {0, kOrientations, 5 * kOrientations};

/// Twice the central difference, and twice the one-sided difference at the border.
int TwiceDifference(const unsigned char* pixel, int position, int size, std::ptrdiff_t step) {
  const std::ptrdiff_t before = position > 0 ? step : 0;
  const std::ptrdiff_t after = position + 1 < size ? step : 0;
  const int difference = pixel[after] - pixel[-before];
  return before != 0 && after != 0 ? difference : 2 * difference;
}

/// From 0: the angle 90 degrees + atan(vertical / horizontal) in steps of 9 degrees, whose upper ends belong to them.
std::size_t Orientation(int horizontal, int vertical) {
  // The tangents of -81, -72 ... 81 degrees.
  static const auto tangents = [] {
    std::array<double, kOrientations - 1> table;
    for (std::size_t i = 0; i < table.size(); ++i) {
      table[i] = std::tan((static_cast<double>(i) - 9.0) * 9.0 * std::numbers::pi / 180.0);
    }
    // What whole numbers can reach is exact.
    table[4] = -1.0;
    table[9] = 0.0;
    table[14] = 1.0;
    return table;
  }();
  // A vertical gradient has no tangent: up and down are the two ends of the half circle.
  if (horizontal == 0) {
    return vertical > 0 ? kOrientations - 1 : 0;
  }
  const double slope = static_cast<double>(vertical) / horizontal;
  // All of them, which is faster than a search.
  int below = 0;
  for (const double tangent : tangents) {
    below += static_cast<int>(tangent < slope);
  }
  return static_cast<std::size_t>(below);
}

/// The index of the cell of each column or row.
std::vector<std::size_t> CellIndices(int size) {
  std::vector<std::size_t> indices(static_cast<std::size_t>(size));
  for (int i = 0; i < static_cast<int>(kCells); ++i) {
    std::fill(indices.begin() + PartBegin(i, kCells, size), indices.begin() + PartBegin(i + 1, kCells, size),
              static_cast<std::size_t>(i));
  }
  return indices;
}

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  const std::vector<std::size_t> columns = CellIndices(picture.width);
  const std::vector<std::size_t> rows = CellIndices(picture.height);
  for (const auto& [x, y] : FindEdges(picture)) {
    const unsigned char* pixel = picture.Row(y) + x;
    const int horizontal = TwiceDifference(pixel, x, picture.width, 1);
    const int vertical = TwiceDifference(pixel, y, picture.height, picture.stride);
    const std::size_t orientation = Orientation(horizontal, vertical);
    // Of twice the gradient; the scaling at the end takes the factor out.
    const double weight = std::sqrt(static_cast<double>(horizontal * horizontal + vertical * vertical));
    for (std::size_t level = 0; level < 3; ++level) {
      const std::size_t shift = 2 - level;
      // Dropping a bit of the finest cell gives the cell of the level above.
      const std::size_t column = columns[static_cast<std::size_t>(x)] >> shift;
      const std::size_t cell = (column << level) + (rows[static_cast<std::size_t>(y)] >> shift);
      result[kLevelBegin[level] + cell * kOrientations + orientation] += weight;
    }
  }
  ScaleToUnitSum(result);
}
