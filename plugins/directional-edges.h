#pragma once

#include <array>
#include <cstdint>

/// The five edge filters on the means of a block's quarters, of C. S. Won, D. K. Park, S.-J. Park, "Efficient Use of
/// MPEG-7 Edge Histogram Descriptor", ETRI Journal 24(1), 2002. 45 degrees is an edge that rises to the right.
enum TEdgeKind { kVertical, kHorizontal, k45Degrees, k135Degrees, kNonDirectional, kEdgeKinds };

/// Top left, top right, bottom left, bottom right: four sums over as many pixels each, or four means.
using TQuarters = std::array<std::int64_t, 4>;

/// The squares of the filters' strengths, which are whole numbers, so that comparing them is exact.
inline std::array<std::int64_t, kEdgeKinds> SquaredStrengths(const TQuarters& a) {
  const std::int64_t vertical = a[0] - a[1] + a[2] - a[3];
  const std::int64_t horizontal = a[0] + a[1] - a[2] - a[3];
  const std::int64_t rising = a[0] - a[3];
  const std::int64_t falling = a[1] - a[2];
  const std::int64_t nonDirectional = a[0] - a[1] - a[2] + a[3];
  return {vertical * vertical, horizontal * horizontal, 2 * rising * rising, 2 * falling * falling,
          4 * nonDirectional * nonDirectional};
}
