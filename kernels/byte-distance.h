// City-block distances between rows of bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

// Rows of bytes are filled up to a multiple of this, so that they need no loop for what is left.
constexpr std::size_t kByteRowUnit = 64;

// Puts the city-block distance of `query` from each of `count` rows into `distances`. The rows lie one behind the other
// and have `length` bytes each, a multiple of kByteRowUnit and at most 2^24.
void ByteDistances(const std::uint8_t* query, const std::uint8_t* rows, std::size_t length, std::size_t count,
                   std::uint32_t* distances);

}  // namespace kernels
