#include "kernels/gray-plane.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/gray-plane.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

constexpr hn::ScalableTag<uint8_t> kBytes;
constexpr hn::Repartition<int16_t, decltype(kBytes)> kShorts;
constexpr hn::Repartition<uint16_t, decltype(kBytes)> kWords;
constexpr hn::Repartition<int32_t, decltype(kBytes)> kSums;
constexpr hn::Repartition<uint32_t, decltype(kBytes)> kPixels;
using TBytes = hn::Vec<decltype(kBytes)>;
using TPixels = hn::Vec<decltype(kPixels)>;

// Red and green, or blue and green, of the four pixels in the first twelve bytes of a block, each as 16 bits.
constexpr uint8_t kNone = 0x80;
alignas(16) constexpr uint8_t kRedGreen[16] = {0, kNone, 1, kNone, 3, kNone, 4,  kNone,
                                               6, kNone, 7, kNone, 9, kNone, 10, kNone};
alignas(16) constexpr uint8_t kBlueGreen[16] = {2, kNone, 1, kNone, 5,  kNone, 4,  kNone,
                                                8, kNone, 7, kNone, 11, kNone, 10, kNone};
// Brings the bytes of what Interleave makes into the order of its arguments.
alignas(16) constexpr uint8_t kInOrder[16] = {0, 4, 8, 12, 2, 6, 10, 14, 1, 5, 9, 13, 3, 7, 11, 15};

/// 19595 R + 38470 G + 7471 B + 32768 of each pixel; the gray level is the third byte. As products have signs, green is
/// taken twice with half its weight.
HWY_INLINE TPixels WeighedSums(TBytes pixels) {
  // Two 16-bit weights side by side, the first in the lower half, to meet two channels in one instruction.
  const auto pair = [](int32_t first, int32_t second)
                        HWY_ATTR { return BitCast(kShorts, Set(kSums, first | second << 16)); };
  const auto redGreen = BitCast(kShorts, TableLookupBytesOr0(pixels, LoadDup128(kBytes, kRedGreen)));
  const auto blueGreen = BitCast(kShorts, TableLookupBytesOr0(pixels, LoadDup128(kBytes, kBlueGreen)));
  auto odd = Zero(kSums);
  auto even = ReorderWidenMulAccumulate(kSums, redGreen, pair(19595, 19235), Set(kSums, 32768), odd);
  even = ReorderWidenMulAccumulate(kSums, blueGreen, pair(7471, 19235), even, odd);
  // The widening product leaves open which lanes are summed where; this gives each pixel its own sum again.
  return BitCast(kPixels, RearrangeToOddPlusEven(even, odd));
}

/// The third bytes of all lanes, first those of the first lanes.
HWY_INLINE TBytes Interleave(TPixels a, TPixels b, TPixels c, TPixels d) {
  const auto ab = OddEven(BitCast(kWords, b), BitCast(kWords, hn::ShiftRight<16>(a)));
  const auto cd = OddEven(BitCast(kWords, d), BitCast(kWords, hn::ShiftRight<16>(c)));
  return BitCast(kBytes, Or(ab, hn::ShiftLeft<8>(cd)));
}

/// Writes as many gray levels as whole vectors hold and returns their number.
size_t GrayVectors(const uint8_t* HWY_RESTRICT rgb, uint8_t* HWY_RESTRICT gray, size_t width) {
  // A vector has room for `lanes` pixels of four bytes each, and what is loaded holds a third more of three.
  const size_t lanes = hn::Lanes(kPixels);
  const size_t blocks = lanes / 4;
  HWY_ALIGN int32_t first[hn::MaxLanes(kPixels)];
  HWY_ALIGN int32_t last[hn::MaxLanes(kPixels)];
  HWY_ALIGN int32_t inOrder[hn::MaxLanes(kPixels)];
  for (size_t i = 0; i < lanes; ++i) {
    // Four pixels to each block.
    first[i] = static_cast<int32_t>(i - i / 4);
    // The last lane of all would come from beyond the vector; like each fourth, it is not used.
    last[i] = static_cast<int32_t>(std::min(i - i / 4 + blocks, lanes - 1));
    inOrder[i] = static_cast<int32_t>(i % blocks * 4 + i / blocks);
  }
  const auto firstLanes = SetTableIndices(kPixels, first);
  const auto lastLanes = SetTableIndices(kPixels, last);
  const auto lanesInOrder = SetTableIndices(kPixels, inOrder);
  const auto sums = [](const uint8_t* bytes, auto indices) HWY_ATTR {
    return WeighedSums(BitCast(kBytes, TableLookupLanes(BitCast(kPixels, LoadU(kBytes, bytes)), indices)));
  };

  size_t x = 0;
  for (; x + 4 * lanes <= width; x += 4 * lanes) {
    const uint8_t* const bytes = rgb + 3 * x;
    // The last load ends where its pixels end, as nothing may follow them.
    const auto mixed = Interleave(sums(bytes, firstLanes), sums(bytes + 3 * lanes, firstLanes),
                                  sums(bytes + 6 * lanes, firstLanes), sums(bytes + 8 * lanes, lastLanes));
    const auto ordered = BitCast(kPixels, TableLookupBytes(mixed, LoadDup128(kBytes, kInOrder)));
    StoreU(BitCast(kBytes, TableLookupLanes(ordered, lanesInOrder)), kBytes, gray + x);
  }
  return x;
}

#else

/// Lanes of one element cannot be shuffled: without vectors the plain loop does it all.
size_t GrayVectors(const uint8_t*, uint8_t*, size_t) {
  return 0;
}

#endif

void GrayRow(const uint8_t* HWY_RESTRICT rgb, uint8_t* HWY_RESTRICT gray, size_t width) {
  for (size_t x = GrayVectors(rgb, gray, width); x < width; ++x) {
    const uint8_t* pixel = rgb + 3 * x;
    // ITU-R BT.601 in 16-bit fixed point: 0.299, 0.587 and 0.114 times 65536, rounded so that they sum to 65536. 32768
    // is one half.
    gray[x] = static_cast<uint8_t>((19595u * pixel[0] + 38470u * pixel[1] + 7471u * pixel[2] + 32768u) >> 16);
  }
}

}  // namespace

void GrayPlane(const uint8_t* rgb, int rgbStride, uint8_t* gray, int grayStride, int width, int height) {
  for (int y = 0; y < height; ++y) {
    GrayRow(rgb + static_cast<ptrdiff_t>(y) * rgbStride, gray + static_cast<ptrdiff_t>(y) * grayStride,
            static_cast<size_t>(width));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(GrayPlane);

void GrayPlane(const unsigned char* rgb, int rgbStride, unsigned char* gray, int grayStride, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(GrayPlane)(rgb, rgbStride, gray, grayStride, width, height);
}

}  // namespace kernels
#endif
