#include "kernels/resize-cubic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/cubic-weights.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/resize-cubic.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Fractional bits of what the vertical pass leaves to the horizontal one. Overshoot takes the levels to less than
// 1.25 * 255 on either side, and 1.25 * 255 * 64 still fits into 16 bits with a sign.
constexpr int kRowBits = 6;
constexpr int kVerticalShift = kCubicWeightBits - kRowBits;
constexpr int kHorizontalShift = kCubicWeightBits + kRowBits;

#if HWY_TARGET != HWY_SCALAR

// Adds the products of neighbouring 16-bit lanes, two to each 32-bit lane.
template <class D32, class V16>
HWY_INLINE hn::Vec<D32> AddProductPairs(D32 d32, hn::Vec<D32> sum, V16 a, V16 b) {
#if HWY_ARCH_X86
  // Where the products go is left open in general; this family adds neighbours and leaves the second sum alone.
  auto unused = Zero(d32);
  return ReorderWidenMulAccumulate(d32, a, b, sum, unused);
#else
  const auto a32 = BitCast(d32, a);
  const auto b32 = BitCast(d32, b);
  const auto even = Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a32)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b32)));
  return Add(sum, Add(even, Mul(hn::ShiftRight<16>(a32), hn::ShiftRight<16>(b32))));
#endif
}

// One column strip, a vector of 16-bit lanes wide, of one row of the vertical pass.
HWY_INLINE void FilterStrip(const uint8_t* source, ptrdiff_t stride, const int16_t* weights, int taps,
                            int16_t* row) {
  const hn::ScalableTag<int16_t> d16;
  const hn::RepartitionToWide<decltype(d16)> d32;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  auto sumLower = Set(d32, 1 << (kVerticalShift - 1));
  auto sumUpper = sumLower;
  for (int t = 0; t < taps; t += 2) {
    // The last of an odd number of taps is paired with itself, under the zero that follows its weight.
    const uint8_t* second = t + 1 < taps ? source + stride : source;
    const auto a = PromoteTo(d16, LoadU(d8, source));
    const auto b = PromoteTo(d16, LoadU(d8, second));
    int32_t weightPair;
    hwy::CopyBytes<sizeof(weightPair)>(weights + t, &weightPair);
    const auto pair = BitCast(d16, Set(d32, weightPair));
    sumLower = AddProductPairs(d32, sumLower, InterleaveLower(a, b), pair);
    sumUpper = AddProductPairs(d32, sumUpper, InterleaveUpper(d16, a, b), pair);
    source += 2 * stride;
  }
  // Back to one 16-bit lane a column. Interleaving has left columns 0 to 3 of each block of eight in one vector and
  // 4 to 7 in the other.
  alignas(16) static constexpr uint8_t kInOrder[16] = {0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15};
  const auto lower = BitCast(d16, hn::ShiftRight<kVerticalShift>(sumLower));
  const auto upper = BitCast(d16, hn::ShiftLeft<16>(hn::ShiftRight<kVerticalShift>(sumUpper)));
  const auto order = LoadDup128(hn::Repartition<uint8_t, decltype(d16)>(), kInOrder);
  StoreU(TableLookupBytes(OddEven(upper, lower), BitCast(d16, order)), d16, row);
}

// Filters all columns of a row if they fill a vector, and returns whether they do.
bool FilterStrips(const uint8_t* source, ptrdiff_t stride, const int16_t* weights, int taps, size_t columns,
                  int16_t* row) {
  const size_t lanes = hn::Lanes(hn::ScalableTag<int16_t>());
  if (columns < lanes) {
    return false;
  }
  for (size_t i = 0; i + lanes <= columns; i += lanes) {
    FilterStrip(source + i, stride, weights, taps, row + i);
  }
  // What is left gets a whole vector too, which repeats some of the columns before it.
  FilterStrip(source + columns - lanes, stride, weights, taps, row + columns - lanes);
  return true;
}

// Takes as much of a row of interleaved channels apart as vectors hold and returns the number of pixels.
size_t SplitVectors(const int16_t* row, size_t width, int16_t* const planes[3]) {
  const hn::FixedTag<int16_t, 8> d;
  size_t x = 0;
  for (; x + 8 <= width; x += 8) {
    auto red = Zero(d);
    auto green = Zero(d);
    auto blue = Zero(d);
    hn::LoadInterleaved3(d, row + 3 * x, red, green, blue);
    StoreU(red, d, planes[0] + x);
    StoreU(green, d, planes[1] + x);
    StoreU(blue, d, planes[2] + x);
  }
  return x;
}

// The sum of `pitch` products; `pitch` is a multiple of eight.
HWY_INLINE int32_t SumOfProducts(const int16_t* levels, const int16_t* weights, int pitch) {
  const hn::FixedTag<int16_t, 8> d16;
  const hn::RepartitionToWide<decltype(d16)> d32;
  auto sum0 = Zero(d32);
  auto sum1 = Zero(d32);
  for (int t = 0; t < pitch; t += 8) {
    sum0 = ReorderWidenMulAccumulate(d32, LoadU(d16, levels + t), LoadU(d16, weights + t), sum0, sum1);
  }
  return GetLane(SumOfLanes(d32, Add(sum0, sum1)));
}

#else

// Lanes of one element cannot be paired: without vectors plain loops do it all.
bool FilterStrips(const uint8_t*, ptrdiff_t, const int16_t*, int, size_t, int16_t*) { return false; }

size_t SplitVectors(const int16_t*, size_t, int16_t* const*) { return 0; }

int32_t SumOfProducts(const int16_t* levels, const int16_t* weights, int pitch) {
  int32_t sum = 0;
  for (int t = 0; t < pitch; ++t) {
    sum += levels[t] * weights[t];
  }
  return sum;
}

#endif

// One row of the vertical pass: `columns` bytes of `taps` source rows, weighted into as many 16-bit levels.
void FilterColumns(const uint8_t* source, ptrdiff_t stride, const int16_t* weights, int taps, size_t columns,
                   int16_t* row) {
  if (FilterStrips(source, stride, weights, taps, columns, row)) {
    return;
  }
  for (size_t i = 0; i < columns; ++i) {
    int32_t sum = 1 << (kVerticalShift - 1);
    for (int t = 0; t < taps; ++t) {
      sum += weights[t] * source[t * stride + static_cast<ptrdiff_t>(i)];
    }
    row[i] = static_cast<int16_t>(sum >> kVerticalShift);
  }
}

// Takes a row of three interleaved channels apart.
void SplitChannels(const int16_t* row, size_t width, int16_t* const planes[3]) {
  for (size_t x = SplitVectors(row, width, planes); x < width; ++x) {
    for (size_t channel = 0; channel < 3; ++channel) {
      planes[channel][x] = row[3 * x + channel];
    }
  }
}

// One row of the horizontal pass.
template <size_t kChannels>
void FilterRow(const int16_t* const planes[3], const CubicWeights& horizontal, int width, uint8_t* out) {
  for (int x = 0; x < width; ++x) {
    const int16_t* weights = horizontal.weights.data() + static_cast<ptrdiff_t>(x) * horizontal.pitch;
    for (size_t channel = 0; channel < kChannels; ++channel) {
      const int32_t sum = SumOfProducts(planes[channel] + horizontal.first[x], weights, horizontal.pitch);
      *out++ = static_cast<uint8_t>(std::clamp((sum + (1 << (kHorizontalShift - 1))) >> kHorizontalShift, 0, 255));
    }
  }
}

// The vertical pass comes first: its vectors run along rows, which is the faster way through most of the work when a
// large picture shrinks. Each of its rows goes through the horizontal pass at once and is needed no more.
template <size_t kChannels>
void ResizeCubic(const uint8_t* source, int sourceStride, int sourceWidth, int sourceHeight, uint8_t* destination,
                 int destinationStride, int width, int height) {
  const CubicWeights vertical(sourceHeight, height);
  const CubicWeights horizontal(sourceWidth, width);
  const size_t rowWidth = static_cast<size_t>(sourceWidth);
  // The zero weights that fill up a row of them meet up to seven levels beyond the end.
  const size_t paddedWidth = rowWidth + 8;
  std::vector<int16_t> row(kChannels * paddedWidth);
  std::vector<int16_t> split(kChannels == 1 ? 0 : kChannels * paddedWidth);
  int16_t* planes[3] = {row.data(), nullptr, nullptr};
  if constexpr (kChannels == 3) {
    for (size_t channel = 0; channel < 3; ++channel) {
      planes[channel] = split.data() + channel * paddedWidth;
    }
  }

  for (int y = 0; y < height; ++y) {
    FilterColumns(source + static_cast<ptrdiff_t>(vertical.first[y]) * sourceStride, sourceStride,
                  vertical.weights.data() + static_cast<ptrdiff_t>(y) * vertical.pitch, vertical.taps,
                  kChannels * rowWidth, row.data());
    if constexpr (kChannels == 3) {
      SplitChannels(row.data(), rowWidth, planes);
    }
    FilterRow<kChannels>(planes, horizontal, width, destination + static_cast<ptrdiff_t>(y) * destinationStride);
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
