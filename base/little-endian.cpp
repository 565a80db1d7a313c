#include "base/little-endian.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace base {

namespace {

constexpr bool kSwaps = std::endian::native == std::endian::big;

/// Turns the bytes of a number round, on a machine that keeps them the other way.
template <typename TNumber>
TNumber Ordered(TNumber value) {
  if constexpr (kSwaps) {
    // Through bytes and not through shifts, which doubles do not have.
    std::array<unsigned char, sizeof(TNumber)> bytes;
    std::memcpy(bytes.data(), &value, sizeof(value));
    std::reverse(bytes.begin(), bytes.end());
    std::memcpy(&value, bytes.data(), sizeof(value));
  }
  return value;
}

}  // namespace

std::uint32_t ToLittleEndian(std::uint32_t value) {
  return Ordered(value);
}

void ToLittleEndian(double* values, std::size_t count) {
  if constexpr (kSwaps) {
    std::transform(values, values + count, values, Ordered<double>);
  }
}

}  // namespace base
