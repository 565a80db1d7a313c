#include "kernels/lbp-histogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kernels/count-tables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/lbp-histogram.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Patterns are worked out this many at a time; the block stays in the first-level cache until it is counted.
constexpr size_t kBlock = 4096;

/// The eight neighbors of a pixel as distances from its address, bit 0 first.
struct TNeighbors {
  explicit TNeighbors(ptrdiff_t stride)
      : offsets{-stride - 1, -stride, -stride + 1, -1, 1, stride - 1, stride, stride + 1} {}

  ptrdiff_t offsets[8];
};

HWY_INLINE void StorePatterns(const uint8_t* centers, const TNeighbors& neighbors, uint8_t* patterns) {
  const hn::ScalableTag<uint8_t> d;
  const auto center = LoadU(d, centers);
  auto pattern = Zero(d);
  for (int bit = 0; bit < 8; ++bit) {
    const auto isGreater = Gt(LoadU(d, centers + neighbors.offsets[bit]), center);
    // "Strictly greater" is this system's rule. Ojala, Pietikäinen and Harwood, who introduced the patterns (1996), set
    // the bit for equal neighbors too; a flat area then has the pattern 255 and not 0.
    pattern = Or(pattern, IfThenElseZero(isGreater, Set(d, static_cast<uint8_t>(1u << bit))));
  }
  StoreU(pattern, d, patterns);
}

/// The patterns of `count` neighboring pixels.
void PatternsOfRow(const uint8_t* centers, const TNeighbors& neighbors, size_t count, uint8_t* patterns) {
  const size_t lanes = hn::Lanes(hn::ScalableTag<uint8_t>());
  if (count < lanes) {
    for (size_t x = 0; x < count; ++x) {
      unsigned pattern = 0;
      for (int bit = 0; bit < 8; ++bit) {
        pattern |= (centers[static_cast<ptrdiff_t>(x) + neighbors.offsets[bit]] > centers[x] ? 1u : 0u) << bit;
      }
      patterns[x] = static_cast<uint8_t>(pattern);
    }
    return;
  }
  for (size_t x = 0; x + lanes <= count; x += lanes) {
    StorePatterns(centers + x, neighbors, patterns + x);
  }
  if (count % lanes != 0) {
    // What is left gets a whole vector too, which repeats some of the patterns before it.
    StorePatterns(centers + count - lanes, neighbors, patterns + count - lanes);
  }
}

}  // namespace

void LbpHistogram(const uint8_t* gray, int stride, int width, int height, uint64_t* counts) {
  const TNeighbors neighbors(stride);
  // The border has no complete neighborhood and is not counted.
  // At least 1: smaller pictures, with which the difference would wrap around, do not come here.
  const size_t interior = static_cast<size_t>(width) - 2;
  TCountTables tables;
  HWY_ALIGN uint8_t patterns[kBlock];
  for (int y = 1; y < height - 1; ++y) {
    const uint8_t* row = gray + static_cast<ptrdiff_t>(y) * stride + 1;
    for (size_t x = 0; x < interior; x += kBlock) {
      const size_t count = std::min(kBlock, interior - x);
      PatternsOfRow(row + x, neighbors, count, patterns);
      tables.Add(patterns, count);
    }
  }
  tables.Sum(counts);
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(LbpHistogram);

void LbpHistogram(const unsigned char* gray, int stride, int width, int height, std::uint64_t counts[256]) {
  if (width < 3 || height < 3) {
    std::fill_n(counts, 256, 0);
    return;
  }
  HWY_DYNAMIC_DISPATCH(LbpHistogram)(gray, stride, width, height, counts);
}

}  // namespace kernels
#endif
