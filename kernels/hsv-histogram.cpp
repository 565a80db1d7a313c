#include "kernels/hsv-histogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kernels/count-tables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/hsv-histogram.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Bins are worked out this many at a time; the block stays in the first-level cache until it is counted.
constexpr size_t kBlock = 4096;

#if HWY_TARGET != HWY_SCALAR

// A bin needs steps, not quotients, and a quotient reaches a step when its numerator reaches a multiple of its
// denominator; so there is no division.
//
// Saturation. delta * 255 / v reaches
//    64 when 255 delta >=  64 v, for whole numbers up to 255 the same as delta > v / 4 cut towards zero,
//   128 when 255 delta >= 128 v, likewise the same as delta > v / 2,
//   192 when 255 delta >= 192 v; here the rounding does not always come out, and the products are compared.
//
// Hue. Which byte is the largest and which of the other two is greater makes six sectors of 60 degrees. A sector begins
// at red, green or blue (hue 0, 120, 240, which lie in the hue steps 0, 5 and 10) and goes up or down from there by
// q = 60 n / delta degrees, n being the difference of the two lesser channels. Within a sector at most three borders
// between hue steps are crossed, at these values of q. 61 is never reached. Downwards the hue falls below 0, 120, 240
// by whole degrees, so that q = 1 already leaves step 0.
//
//   hue step k begins at the first whole degree whose hue * 255 / 360 is at least 16 k:
//   0 23 46 68 91 113 136 159 181 204 226 249 272 294 317 339
//
// The tables are indexed by sector: red up, red down, green up, green down, blue up, blue down. Sixteen entries,
// because the table look-up wants them.
alignas(16) constexpr uint8_t kFirstBorder[16] = {23, 1, 16, 8, 9, 15};
alignas(16) constexpr uint8_t kSecondBorder[16] = {46, 22, 39, 30, 32, 37};
alignas(16) constexpr uint8_t kThirdBorder[16] = {61, 44, 61, 53, 54, 60};
alignas(16) constexpr uint8_t kFirstStep[16] = {0, 0, 5, 5, 10, 10};

// An index with this bit set looks up zero. In the upper byte of a 16-bit lane it makes a byte table yield lanes.
constexpr int16_t kLookUpByte = static_cast<int16_t>(0x8000);

/// The bins of as many pixels as a vector has 16-bit lanes, in the lower byte of each lane. The upper byte is
/// arbitrary.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Bins(D d, V red, V green, V blue) {
  const hn::Repartition<uint8_t, D> d8;
  const auto table = [&](const uint8_t* entries, V sector) HWY_ATTR {
    return BitCast(d, TableLookupBytesOr0(LoadDup128(d8, entries), BitCast(d8, sector)));
  };
  // Comparisons yield -1, so that their sums count downwards.
  const auto minusOneIf = [&](auto condition) HWY_ATTR { return VecFromMask(d, condition); };

  const V one = Set(d, 1);
  const V value = Max(Max(red, green), blue);
  const V delta = Sub(value, Min(Min(red, green), blue));

  // Whole numbers have no ">=" here: a >= b is a + 1 > b. And 255 delta >= 192 v is 85 delta >= 64 v, which stays
  // within 16 bits with a sign.
  V saturation = minusOneIf(Gt(delta, hn::ShiftRight<2>(value)));
  saturation = Add(saturation, minusOneIf(Gt(delta, hn::ShiftRight<1>(value))));
  saturation = Add(saturation, minusOneIf(Gt(Add(Mul(delta, Set(d, 85)), one), hn::ShiftLeft<6>(value))));

  // The difference of the two lesser channels, in the order that makes "up" positive.
  const auto isGreen = Eq(green, value);
  const auto isBlue = Eq(blue, value);
  const V difference = IfThenElse(isBlue, Sub(red, green), IfThenElse(isGreen, Sub(blue, red), Sub(green, blue)));
  const V isDown = hn::ShiftRight<15>(difference);
  const V sector = Sub(
      IfThenElse(isBlue, Set(d, kLookUpByte + 4), IfThenElse(isGreen, Set(d, kLookUpByte + 2), Set(d, kLookUpByte))),
      isDown);

  const V numerator = Add(Mul(Abs(difference), Set(d, 60)), one);
  V crossed = minusOneIf(Gt(numerator, Mul(delta, table(kFirstBorder, sector))));
  crossed = Add(crossed, minusOneIf(Gt(numerator, Mul(delta, table(kSecondBorder, sector)))));
  crossed = Add(crossed, minusOneIf(Gt(numerator, Mul(delta, table(kThirdBorder, sector)))));
  // `crossed` counts downwards from zero, which is the way to go where isDown is -1. Elsewhere it is negated.
  const V up = Not(isDown);
  const V step = Add(table(kFirstStep, sector), Sub(Xor(crossed, up), up));

  // Gray has neither hue nor saturation. Step 0 goes down to step 15, since the bits above are dropped.
  const V color = IfThenElseZero(Gt(delta, Zero(d)), Sub(hn::ShiftLeft<4>(step), hn::ShiftLeft<2>(saturation)));
  return Add(color, hn::ShiftRight<6>(value));
}

/// The bins of one vector of pixels.
HWY_INLINE void StoreBins(const uint8_t* pixels, uint8_t* bins) {
  const hn::ScalableTag<uint8_t> d8;
  const hn::Repartition<int16_t, decltype(d8)> d16;
  const hn::Repartition<uint16_t, decltype(d8)> du16;
  auto red = Zero(d8);
  auto green = Zero(d8);
  auto blue = Zero(d8);
  // 16-bit lanes from here on: the products of the comparisons, such as 85 * 255 and 60 * 255, need up to 15 bits.
  hn::LoadInterleaved3(d8, pixels, red, green, blue);
  // Even and odd bytes apart, so that no byte has to change its place.
  const auto even = [&](auto bytes) HWY_ATTR { return And(BitCast(d16, bytes), Set(d16, 0xFF)); };
  const auto odd = [&](auto bytes) HWY_ATTR { return BitCast(d16, hn::ShiftRight<8>(BitCast(du16, bytes))); };
  const auto evenBins = Bins(d16, even(red), even(green), even(blue));
  const auto oddBins = Bins(d16, odd(red), odd(green), odd(blue));
  StoreU(OddEven(BitCast(d8, hn::ShiftLeft<8>(oddBins)), BitCast(d8, evenBins)), d8, bins);
}

/// Writes the bins of `count` neighboring pixels if they fill a vector, and returns whether they do.
bool StoreBinsOfVectors(const uint8_t* pixels, size_t count, uint8_t* bins) {
  const size_t lanes = hn::Lanes(hn::ScalableTag<uint8_t>());
  if (count < lanes) {
    return false;
  }
  for (size_t x = 0; x + lanes <= count; x += lanes) {
    StoreBins(pixels + 3 * x, bins + x);
  }
  if (count % lanes != 0) {
    // What is left gets a whole vector too, which repeats some of the bins before it.
    StoreBins(pixels + 3 * (count - lanes), bins + count - lanes);
  }
  return true;
}

#else

/// Lanes of one element have no tables to look up in: without vectors the plain formula does it all.
bool StoreBinsOfVectors(const uint8_t*, size_t, uint8_t*) {
  return false;
}

#endif

/// The plain formula, for rows that are too short.
uint8_t BinOfPixel(int red, int green, int blue) {
  const int value = std::max({red, green, blue});
  const int delta = value - std::min({red, green, blue});
  if (delta == 0) {
    return static_cast<uint8_t>(value / 64);
  }
  // In degrees. Red is tried last, so that on a tie green goes before red and blue before both, as the header says. 360
  // keeps the remainder below from becoming negative; all divisions cut toward zero.
  int hue = 60 * (green - blue) / delta + 360;
  if (blue == value) {
    hue = 60 * (red - green) / delta + 240;
  } else if (green == value) {
    hue = 60 * (blue - red) / delta + 120;
  }
  const int step = hue % 360 * 255 / 360 / 16;
  return static_cast<uint8_t>(16 * step + delta * 255 / value / 64 * 4 + value / 64);
}

void BinsOfRow(const uint8_t* pixels, size_t count, uint8_t* bins) {
  if (StoreBinsOfVectors(pixels, count, bins)) {
    return;
  }
  for (size_t x = 0; x < count; ++x) {
    bins[x] = BinOfPixel(pixels[3 * x], pixels[3 * x + 1], pixels[3 * x + 2]);
  }
}

}  // namespace

void HsvHistogram(const uint8_t* rgb, int stride, int width, int height, uint64_t* counts) {
  TCountTables tables;
  HWY_ALIGN uint8_t bins[kBlock];
  for (int y = 0; y < height; ++y) {
    const uint8_t* row = rgb + static_cast<ptrdiff_t>(y) * stride;
    for (size_t x = 0; x < static_cast<size_t>(width); x += kBlock) {
      // Row by row: the bytes behind a row are no pixels.
      const size_t count = std::min(kBlock, static_cast<size_t>(width) - x);
      BinsOfRow(row + 3 * x, count, bins);
      tables.Add(bins, count);
    }
  }
  tables.Sum(counts);
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(HsvHistogram);

void HsvHistogram(const unsigned char* rgb, int stride, int width, int height, std::uint64_t counts[256]) {
  if (width < 1 || height < 1) {
    std::fill_n(counts, 256, 0);
    return;
  }
  HWY_DYNAMIC_DISPATCH(HsvHistogram)(rgb, stride, width, height, counts);
}

}  // namespace kernels
#endif
