#include "kernels/gray-plane.h"

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

// The gray levels of 16-bit lanes, in the upper byte of each lane. With each weight cut into its two bytes
//
//   19595 R + 38470 G + 7471 B + 32768 = 256 high + low
//   high = 76 R + 150 G + 29 B + 128
//   low = 139 R + 70 G + 47 B
//
// Both sums fit into 16 bits without a sign (at most 65153 and 65280), and so does high + (low >> 8). The carry is
// complete, which makes this exact, at a quarter of the cost of 32-bit products.
template <class V>
HWY_INLINE V GrayLanes(V red, V green, V blue, const uint16_t* weights) {
  const hn::DFromV<V> d;
  const V high = Add(Add(Mul(red, Set(d, weights[0])), Mul(green, Set(d, weights[1]))),
                     Add(Mul(blue, Set(d, weights[2])), Set(d, 128)));
  const V low = Add(Add(Mul(red, Set(d, weights[3])), Mul(green, Set(d, weights[4]))), Mul(blue, Set(d, weights[5])));
  return Add(high, hn::ShiftRight<8>(low));
}

// Writes as many gray levels as whole vectors hold and returns their number.
size_t GrayVectors(const uint8_t* HWY_RESTRICT rgb, uint8_t* HWY_RESTRICT gray, size_t width, const uint16_t* weights) {
  const hn::ScalableTag<uint8_t> d8;
  const hn::Repartition<uint16_t, decltype(d8)> d16;
  const size_t lanes = hn::Lanes(d8);
  const auto lowByte = Set(d16, 0xFF);

  size_t x = 0;
  for (; x + lanes <= width; x += lanes) {
    auto red = Zero(d8);
    auto green = Zero(d8);
    auto blue = Zero(d8);
    hn::LoadInterleaved3(d8, rgb + 3 * x, red, green, blue);
    const auto red16 = BitCast(d16, red);
    const auto green16 = BitCast(d16, green);
    const auto blue16 = BitCast(d16, blue);
    // Even and odd bytes apart instead of widening the halves: no byte has to change its place, neither now nor when
    // the results come together again.
    const auto even = GrayLanes(And(red16, lowByte), And(green16, lowByte), And(blue16, lowByte), weights);
    const auto odd =
        GrayLanes(hn::ShiftRight<8>(red16), hn::ShiftRight<8>(green16), hn::ShiftRight<8>(blue16), weights);
    const auto result = OddEven(BitCast(d8, odd), BitCast(d8, hn::ShiftRight<8>(even)));
    StoreU(result, d8, gray + x);
  }
  return x;
}

#else

// Lanes of one element cannot be shuffled: without vectors the plain loop does it all.
size_t GrayVectors(const uint8_t*, uint8_t*, size_t, const uint16_t*) {
  return 0;
}

#endif

void GrayRow(const uint8_t* HWY_RESTRICT rgb, uint8_t* HWY_RESTRICT gray, size_t width, const uint16_t* weights) {
  for (size_t x = GrayVectors(rgb, gray, width, weights); x < width; ++x) {
    const uint8_t* pixel = rgb + 3 * x;
    gray[x] = static_cast<uint8_t>((19595u * pixel[0] + 38470u * pixel[1] + 7471u * pixel[2] + 32768u) >> 16);
  }
}

}  // namespace

void GrayPlane(const uint8_t* rgb, int rgbStride, uint8_t* gray, int grayStride, int width, int height,
               const uint16_t* weights) {
  for (int y = 0; y < height; ++y) {
    GrayRow(rgb + static_cast<ptrdiff_t>(y) * rgbStride, gray + static_cast<ptrdiff_t>(y) * grayStride,
            static_cast<size_t>(width), weights);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

// The upper bytes of the weights 19595, 38470 and 7471, then the lower ones. They come as an argument, because a
// compiler that knows them makes several shifts and additions of each product, which is half as fast.
constexpr std::uint16_t kWeightBytes[6] = {76, 150, 29, 139, 70, 47};

HWY_EXPORT(GrayPlane);

void GrayPlane(const unsigned char* rgb, int rgbStride, unsigned char* gray, int grayStride, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(GrayPlane)(rgb, rgbStride, gray, grayStride, width, height, kWeightBytes);
}

}  // namespace kernels
#endif
