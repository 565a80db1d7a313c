// The array work of the SIFT engine: convolution, differences and the search for extrema, on rows of 32-bit floats.
//
// ConvolveTranspose defines the filter, in plain loops for any element type. The functions of Detail do their work with
// SIMD, in the instructions that the processor is found to have at run time. Their results are the same bits on every
// processor and equal those of the plain loops, because lanes are neighboring outputs: each sum is added up in one
// fixed order, and products are never fused with sums.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

namespace VL {

/// The type of all pixels and parameters.
using float_t = float;

/// Filters along rows and writes the result transposed. `source` has N rows of M elements, `destination` M rows of N,
/// and the two do not overlap; `filter_pt` has 2 * W + 1 taps, W not negative. Output element i * N + j is the sum, in
/// the order of k from -W to W, of tap k + W times element i + k of row j. Outside the row its edge element is
/// repeated.
template <typename T>
void ConvolveTranspose(T* destination, const T* source, std::int32_t M, std::int32_t N, const T* filter_pt,
                       std::int32_t W) {
  for (std::int32_t j = 0; j < N; ++j) {
    const T* const row = source + static_cast<std::ptrdiff_t>(j) * M;
    for (std::int32_t i = 0; i < M; ++i) {
      const T* g = filter_pt;
      T sum = 0;
      std::int32_t k = -W;
      for (const T left = row[0]; k <= W && i + k < 0; ++k) {
        sum += *g++ * left;
      }
      for (; k <= W && i + k < M; ++k) {
        sum += *g++ * row[i + k];
      }
      for (const T right = row[M - 1]; k <= W; ++k) {
        sum += *g++ * right;
      }
      assert(g - filter_pt == 2 * W + 1);
      destination[static_cast<std::ptrdiff_t>(i) * N + j] = sum;
    }
  }
}

namespace Detail {

/// The widest filter that Convolve takes.
inline constexpr std::int32_t kLargestRadius = 1024;

/// A filter along the rows of a plane of `width` x `height` and then along its columns. `source` and `destination` may
/// be the same array; `work` has room for a plane and overlaps neither. `filter` has 2 * radius + 1 taps, and `radius`
/// lies in 0 to kLargestRadius.
struct TConvolution {
  float_t* destination;
  float_t* work;
  const float_t* source;
  std::int32_t width;
  std::int32_t height;
  const float_t* filter;
  std::int32_t radius;
};

/// Computes rows `begin` to `end` - 1 of the destination. The first call begins with row 0, each other one where the
/// call before it ended, with `work` untouched in between. The source is there up to row `end` + radius - 1. All calls
/// together give, bit for bit, what two calls of ConvolveTranspose do, the first into another plane and the second
/// back.
void Convolve(const TConvolution& convolution, std::int32_t begin, std::int32_t end);

/// destination[i] = a[i] - b[i] for `count` elements.
void Subtract(float_t* destination, const float_t* a, const float_t* b, std::int32_t count);

/// The rows around a row under search: [plane - 1, plane, plane + 1][row - 1, row, row + 1].
struct TNeighborhood {
  const float_t* rows[3][3];
};

/// Writes to `columns` each column x of the middle row, `begin` <= x < `end` in rising order, whose value is at least
/// `threshold` and greater than its 26 neighbors, or at most -`threshold` and less than all of them. Returns how many.
/// Columns begin - 1 and end are read as neighbors. `columns` has room for end - begin. A NaN is no extremum, nor is
/// anything beside one.
std::int32_t FindExtrema(std::int32_t* columns, const TNeighborhood& around, std::int32_t begin, std::int32_t end,
                         float_t threshold);

}  // namespace Detail
}  // namespace VL
