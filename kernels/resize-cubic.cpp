#include "kernels/resize-cubic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/cubic-weights.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/resize-cubic.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Fractional bits of what the horizontal pass leaves to the vertical one. Overshoot takes the levels to less than
// 1.25 * 255 on either side, and 1.25 * 255 * 64 still fits into 16 bits with a sign.
constexpr int kRowBits = 6;
constexpr int kHorizontalShift = kCubicWeightBits - kRowBits;
constexpr int kVerticalShift = kCubicWeightBits + kRowBits;

// Rows between the passes are filled up to a multiple of this, at least as many as a vector has 16-bit lanes.
constexpr size_t kRowUnit = HWY_MAX_BYTES / sizeof(int16_t);

constexpr size_t kCacheLine = 64;

#if HWY_TARGET != HWY_SCALAR

/// Adds the products of neighboring 16-bit lanes, two to each 32-bit lane.
template <class D32, class V16>
HWY_INLINE hn::Vec<D32> AddProductPairs(D32 d32, hn::Vec<D32> sum, V16 a, V16 b) {
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  // Where the products go is left open in general; the instructions of this family add neighbors and leave the second
  // sum alone. What stands in for vectors where there are none, with some compilers, does not.
  auto unused = Zero(d32);
  return ReorderWidenMulAccumulate(d32, a, b, sum, unused);
#else
  const auto a32 = BitCast(d32, a);
  const auto b32 = BitCast(d32, b);
  const auto even = Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a32)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b32)));
  return Add(sum, Add(even, Mul(hn::ShiftRight<16>(a32), hn::ShiftRight<16>(b32))));
#endif
}

template <class D8, class V8>
HWY_INLINE void StoreWidened(D8 /*d8*/, V8 bytes, int16_t* levels) {
  const hn::RepartitionToWide<hn::Repartition<int8_t, D8>> d16;
  const hn::Half<D8> half;
  StoreU(PromoteTo(d16, LowerHalf(half, bytes)), d16, levels);
  StoreU(PromoteTo(d16, UpperHalf(half, bytes)), d16, levels + hn::Lanes(d16));
}

/// Takes as much of a row of pixels apart as vectors hold, one plane of 16-bit levels for each channel, and returns the
/// number of pixels.
template <size_t kChannels>
size_t SplitVectors(const uint8_t* pixels, size_t width, int16_t* const planes[kChannels]) {
  const hn::ScalableTag<uint8_t> d8;
  const size_t lanes = hn::Lanes(d8);
  size_t x = 0;
  for (; x + lanes <= width; x += lanes) {
    if constexpr (kChannels == 3) {
      auto red = Zero(d8);
      auto green = Zero(d8);
      auto blue = Zero(d8);
      hn::LoadInterleaved3(d8, pixels + 3 * x, red, green, blue);
      StoreWidened(d8, red, planes[0] + x);
      StoreWidened(d8, green, planes[1] + x);
      StoreWidened(d8, blue, planes[2] + x);
    } else {
      StoreWidened(d8, LoadU(d8, pixels + x), planes[0] + x);
    }
  }
  return x;
}

/// Adds the upper half of a vector to its lower one until four lanes are left.
template <class D, class V>
HWY_INLINE auto FoldToFour(D d, V v) {
  if constexpr (hn::MaxLanes(d) > 4) {
    const hn::Half<D> half;
    return FoldToFour(half, Add(LowerHalf(half, v), UpperHalf(half, v)));
  } else {
    return v;
  }
}

/// One pixel of the horizontal pass: `pitch` products for each channel, a multiple of eight. Writes four lanes, of
/// which a pixel of three channels uses three.
template <size_t kChannels>
HWY_INLINE void FilterPixel(const int16_t* const planes[kChannels], ptrdiff_t begin, const int16_t* weights,
                            ptrdiff_t pitch, int16_t* row) {
#if HWY_HAVE_SCALABLE
  const hn::FixedTag<int16_t, 8> wide16;  // vectors without a fixed length cannot be folded
#else
  const hn::CappedTag<int16_t, 16> wide16;
#endif
  const hn::RepartitionToWide<decltype(wide16)> wide32;
  const hn::FixedTag<int16_t, 8> narrow16;
  const hn::FixedTag<int32_t, 4> d32;
  const hn::FixedTag<int16_t, 4> d16;
  const int16_t* const levels0 = planes[0] + begin;
  const int16_t* const levels1 = planes[kChannels / 2] + begin;
  const int16_t* const levels2 = planes[kChannels - 1] + begin;

  // All channels of a pixel share the weights, so that these are loaded once.
  const auto addTaps = [&](auto tag16, auto& sum0, [[maybe_unused]] auto& sum1, [[maybe_unused]] auto& sum2,
                           ptrdiff_t t) HWY_ATTR {
    const hn::RepartitionToWide<decltype(tag16)> tag32;
    const auto someWeights = LoadU(tag16, weights + t);
    sum0 = AddProductPairs(tag32, sum0, LoadU(tag16, levels0 + t), someWeights);
    if constexpr (kChannels == 3) {
      sum1 = AddProductPairs(tag32, sum1, LoadU(tag16, levels1 + t), someWeights);
      sum2 = AddProductPairs(tag32, sum2, LoadU(tag16, levels2 + t), someWeights);
    }
  };
  auto wide0 = Zero(wide32);
  auto wide1 = Zero(wide32);
  auto wide2 = Zero(wide32);
  const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(wide16));
  // Wide vectors first, for long filters of strong reduction; the rest by eights, as `pitch` is a multiple of eight
  // only.
  ptrdiff_t t = 0;
  for (; t + lanes <= pitch; t += lanes) {
    addTaps(wide16, wide0, wide1, wide2, t);
  }
  auto first = FoldToFour(wide32, wide0);
  auto second = FoldToFour(wide32, wide1);
  auto third = FoldToFour(wide32, wide2);
  for (; t < pitch; t += 8) {
    addTaps(narrow16, first, second, third, t);
  }
  // All parts of three sums at once: two parts of each side by side, then one.
  const auto pairs = Add(InterleaveLower(d32, first, second), InterleaveUpper(d32, first, second));
  const auto thirdPairs = Add(InterleaveLower(d32, third, Zero(d32)), InterleaveUpper(d32, third, Zero(d32)));
  const auto sums = Add(ConcatLowerLower(d32, thirdPairs, pairs), ConcatUpperUpper(d32, thirdPairs, pairs));
  const auto rounded = hn::ShiftRight<kHorizontalShift>(Add(sums, Set(d32, 1 << (kHorizontalShift - 1))));
  StoreU(DemoteTo(d16, rounded), d16, row);
}

/// The vertical pass for as many neighboring columns as a vector has 16-bit lanes.
HWY_INLINE void FilterStrip(const int16_t* const* rows, size_t column, const int16_t* weights, int taps,
                            uint8_t* line) {
  const hn::ScalableTag<int16_t> d16;
  const hn::RepartitionToWide<decltype(d16)> d32;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  auto sumLower = Set(d32, 1 << (kVerticalShift - 1));
  auto sumUpper = sumLower;
  for (int t = 0; t < taps; t += 2) {
    const auto a = LoadU(d16, rows[t] + column);
    const auto b = LoadU(d16, rows[t + 1] + column);
    int32_t weightPair;
    // Two neighboring weights as one 32-bit number: a plain pointer cast would break the rules of aliasing and
    // alignment.
    hwy::CopyBytes<sizeof(weightPair)>(weights + t, &weightPair);
    const auto pair = BitCast(d16, Set(d32, weightPair));
    sumLower = AddProductPairs(d32, sumLower, InterleaveLower(a, b), pair);
    sumUpper = AddProductPairs(d32, sumUpper, InterleaveUpper(d16, a, b), pair);
  }
  // Back to one lane a column. Interleaving has left columns 0 to 3 of each block of eight in one vector and 4 to 7 in
  // the other.
  alignas(16) static constexpr uint8_t kInOrder[16] = {0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15};
  const auto order = LoadDup128(hn::Repartition<uint8_t, decltype(d16)>(), kInOrder);
  const auto lower = BitCast(d16, hn::ShiftRight<kVerticalShift>(sumLower));
  const auto upper = BitCast(d16, hn::ShiftLeft<16>(hn::ShiftRight<kVerticalShift>(sumUpper)));
  const auto levels = TableLookupBytes(OddEven(upper, lower), BitCast(d16, order));
  StoreU(DemoteTo(d8, levels), d8, line + column);  // clamps
}

void FilterColumns(const int16_t* const* rows, size_t columns, const int16_t* weights, int taps, uint8_t* line) {
  for (size_t column = 0; column < columns; column += hn::Lanes(hn::ScalableTag<int16_t>())) {
    FilterStrip(rows, column, weights, taps, line);
  }
}

#else

/// Lanes of one element cannot be paired: without vectors plain loops do it all.
template <size_t kChannels>
size_t SplitVectors(const uint8_t*, size_t, int16_t* const*) {
  return 0;
}

template <size_t kChannels>
void FilterPixel(const int16_t* const planes[kChannels], ptrdiff_t begin, const int16_t* weights, ptrdiff_t pitch,
                 int16_t* row) {
  for (size_t channel = 0; channel < kChannels; ++channel) {
    // One half: the shift below rounds to the nearest.
    int32_t sum = 1 << (kHorizontalShift - 1);
    for (ptrdiff_t t = 0; t < pitch; ++t) {
      sum += planes[channel][begin + t] * weights[t];
    }
    row[channel] = static_cast<int16_t>(sum >> kHorizontalShift);
  }
}

void FilterColumns(const int16_t* const* rows, size_t columns, const int16_t* weights, int taps, uint8_t* line) {
  for (size_t column = 0; column < columns; ++column) {
    int32_t sum = 1 << (kVerticalShift - 1);
    for (int t = 0; t < taps; ++t) {
      sum += rows[t][column] * weights[t];
    }
    line[column] = static_cast<uint8_t>(std::clamp(sum >> kVerticalShift, 0, 255));
  }
}

#endif

/// The horizontal pass over one source row. Meanwhile the row at `next` comes into the cache.
template <size_t kChannels>
void FilterRow(const uint8_t* pixels, const uint8_t* next, size_t sourceWidth, const TCubicWeights& horizontal,
               int16_t* const planes[kChannels], int16_t* row) {
  for (size_t x = SplitVectors<kChannels>(pixels, sourceWidth, planes); x < sourceWidth; ++x) {
    for (size_t channel = 0; channel < kChannels; ++channel) {
      planes[channel][x] = pixels[kChannels * x + channel];
    }
  }
  const int16_t* weights = horizontal.weights.data();
  size_t fetched = 0;
  for (const int begin : horizontal.first) {
    for (; fetched < kChannels * static_cast<size_t>(begin); fetched += kCacheLine) {
      hwy::Prefetch(next + fetched);
    }
    FilterPixel<kChannels>(planes, begin, weights, horizontal.pitch, row);
    row += kChannels;
    weights += horizontal.pitch;
  }
}

/// Each source row goes through the horizontal pass once, in order, and into a ring of as many rows as the vertical
/// pass needs at a time. So the source, which may be far larger than all caches, is read once from end to end.
template <size_t kChannels>
void ResizeCubic(const uint8_t* source, int sourceStride, int sourceWidth, int sourceHeight, uint8_t* destination,
                 int destinationStride, int width, int height) {
  const TCubicWeights horizontal(sourceWidth, width);
  const TCubicWeights vertical(sourceHeight, height);
  const size_t columns = kChannels * static_cast<size_t>(width);
  // Room for the unused lanes of the last pixel and of the last vector.
  const size_t rowLength = (columns + 3 + kRowUnit - 1) / kRowUnit * kRowUnit;
  // The zero weights that fill up a row of them meet up to seven levels beyond the end of a plane.
  const size_t planeLength = static_cast<size_t>(sourceWidth) + 8;

  std::vector<int16_t> levels(kChannels * planeLength);
  int16_t* planes[kChannels];
  for (size_t channel = 0; channel < kChannels; ++channel) {
    planes[channel] = levels.data() + channel * planeLength;
  }
  std::vector<int16_t> ring(static_cast<size_t>(vertical.taps) * rowLength);
  // Rows of neighboring outputs overlap: what one output needs, the next one needs much of.
  const auto rowInRing = [&](int y) { return ring.data() + static_cast<size_t>(y % vertical.taps) * rowLength; };
  // One more, since rows are taken in pairs: the last of an odd number is paired with any row, under a zero weight.
  std::vector<const int16_t*> rows(static_cast<size_t>(vertical.taps) + 1, ring.data());
  std::vector<uint8_t> line(rowLength);

  int done = 0;
  for (int y = 0; y < height; ++y) {
    const int begin = vertical.first[y];
    for (; done < begin + vertical.taps; ++done) {
      const uint8_t* pixels = source + static_cast<ptrdiff_t>(done) * sourceStride;
      const uint8_t* next = done + 1 < sourceHeight ? pixels + sourceStride : pixels;
      FilterRow<kChannels>(pixels, next, static_cast<size_t>(sourceWidth), horizontal, planes, rowInRing(done));
    }
    for (int t = 0; t < vertical.taps; ++t) {
      rows[t] = rowInRing(begin + t);
    }
    FilterColumns(rows.data(), columns, vertical.weights.data() + static_cast<ptrdiff_t>(y) * vertical.pitch,
                  vertical.taps, line.data());
    std::copy_n(line.data(), columns, destination + static_cast<ptrdiff_t>(y) * destinationStride);
  }
}

}  // namespace

void ResizeRgb(const uint8_t* source, int sourceStride, int sourceWidth, int sourceHeight, uint8_t* destination,
               int destinationStride, int width, int height) {
  ResizeCubic<3>(source, sourceStride, sourceWidth, sourceHeight, destination, destinationStride, width, height);
}

void ResizeGray(const uint8_t* source, int sourceStride, int sourceWidth, int sourceHeight, uint8_t* destination,
                int destinationStride, int width, int height) {
  ResizeCubic<1>(source, sourceStride, sourceWidth, sourceHeight, destination, destinationStride, width, height);
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(ResizeRgb);
HWY_EXPORT(ResizeGray);

void ResizeCubicRgb(const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                    unsigned char* destination, int destinationStride, int width, int height) {
  if (std::min({sourceWidth, sourceHeight, width, height}) < 1) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(ResizeRgb)
  (source, sourceStride, sourceWidth, sourceHeight, destination, destinationStride, width, height);
}

void ResizeCubicGray(const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                     unsigned char* destination, int destinationStride, int width, int height) {
  if (std::min({sourceWidth, sourceHeight, width, height}) < 1) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(ResizeGray)
  (source, sourceStride, sourceWidth, sourceHeight, destination, destinationStride, width, height);
}

}  // namespace kernels
#endif
