#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

/// Numbers in files: little-endian on every platform, doubles as 64-bit IEEE. All functions work at the current
/// position of an open binary file and leave it behind what they read or wrote.
namespace base {

/// The number of bytes from the current position to the end of the file; nothing for a file without positions, such as
/// a pipe. A reader tests sizes found in a file against it before it asks for memory.
std::optional<std::uint64_t> RemainingBytes(std::FILE* file);

/// False at the end of the file or after an error; the number is then unchanged.
bool ReadInt32(std::FILE* file, std::int32_t& value);
bool ReadUint32(std::FILE* file, std::uint32_t& value);

/// False if not all could be read; what stands in `values` is then undefined.
bool ReadDoubles(std::FILE* file, double* values, std::size_t count);

/// Turns the bytes of numbers in memory to the order of files on a machine that has the other one, or back.
void ToLittleEndian(double* values, std::size_t count);

/// False if not all could be written.
bool WriteInt32(std::FILE* file, std::int32_t value);
bool WriteUint32(std::FILE* file, std::uint32_t value);
bool WriteDoubles(std::FILE* file, const double* values, std::size_t count);

/// A block: its size in bytes as 32 bits without a sign, then the bytes. Reading gives nothing, and asks for no memory,
/// if the file does not hold that many; writing is false for a block whose size does not fit.
std::optional<std::string> ReadBlock(std::FILE* file);
bool WriteBlock(std::FILE* file, const std::string& bytes);

}  // namespace base
