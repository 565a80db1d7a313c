#pragma once

#include <cstddef>
#include <cstdint>

/// The order of bytes in files: little-endian on every platform. Each function turns numbers from the machine's order
/// to that of files, or back.
namespace base {

std::uint32_t ToLittleEndian(std::uint32_t value);
void ToLittleEndian(double* values, std::size_t count);

}  // namespace base
