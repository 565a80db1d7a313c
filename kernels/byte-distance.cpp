#include "kernels/byte-distance.h"

#include <cstddef>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/byte-distance.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

uint32_t Distance(const uint8_t* HWY_RESTRICT query, const uint8_t* HWY_RESTRICT row, size_t length) {
  // Capped, so that a row is whole vectors even where the processor has longer ones than a unit.
  const hn::CappedTag<uint8_t, kByteRowUnit> d;
  const hn::Repartition<uint64_t, decltype(d)> d64;
  const size_t lanes = hn::Lanes(d);
  // The sums of eight neighboring bytes: 64 bits hold them all.
  const auto difference = [&](size_t i) HWY_ATTR {
    const auto a = LoadU(d, query + i);
    const auto b = LoadU(d, row + i);
    // |a - b| of bytes without a sign, in bytes: one of the two differences that saturate at 0 is the distance, the
    // other is 0.
    return SumsOf8(Or(SaturatedSub(a, b), SaturatedSub(b, a)));
  };
  auto sum = Zero(d64);
  for (size_t i = 0; i < length; i += lanes) {
    sum = Add(sum, difference(i));
  }
  // It fits: 2^24 bytes of at most 255 each are less than 2^32.
  return static_cast<uint32_t>(hn::GetLane(SumOfLanes(d64, sum)));
}

#else

// A loop that compilers know.
uint32_t Distance(const uint8_t* query, const uint8_t* row, size_t length) {
  uint32_t sum = 0;
  for (size_t i = 0; i < length; ++i) {
    const int difference = int{query[i]} - int{row[i]};
    sum += static_cast<uint32_t>(difference < 0 ? -difference : difference);
  }
  return sum;
}

#endif

}  // namespace

void ByteDistances(const uint8_t* query, const uint8_t* rows, size_t length, size_t count, uint32_t* distances) {
  for (size_t row = 0; row < count; ++row) {
    distances[row] = Distance(query, rows + row * length, length);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(ByteDistances);

void ByteDistances(const std::uint8_t* query, const std::uint8_t* rows, std::size_t length, std::size_t count,
                   std::uint32_t* distances) {
  HWY_DYNAMIC_DISPATCH(ByteDistances)(query, rows, length, count, distances);
}

}  // namespace kernels
#endif
