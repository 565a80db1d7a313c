#include "base/little-endian.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#ifndef _WIN32
#include <sys/types.h>
#endif

namespace base {

namespace {

constexpr bool kSwaps = std::endian::native == std::endian::big;

#ifdef _WIN32
std::int64_t Position(std::FILE* file) {
  return _ftelli64(file);
}
bool Seek(std::FILE* file, std::int64_t offset, int origin) {
  return _fseeki64(file, offset, origin) == 0;
}
#else
std::int64_t Position(std::FILE* file) {
  return ftello(file);
}
bool Seek(std::FILE* file, std::int64_t offset, int origin) {
  return fseeko(file, static_cast<off_t>(offset), origin) == 0;
}
#endif

/// Turns the bytes of a number round, on a machine that keeps them the other way.
template <typename TNumber>
TNumber Ordered(TNumber value) {
  if constexpr (kSwaps) {
    std::array<unsigned char, sizeof(TNumber)> bytes;
    std::memcpy(bytes.data(), &value, sizeof(value));
    std::reverse(bytes.begin(), bytes.end());
    std::memcpy(&value, bytes.data(), sizeof(value));
  }
  return value;
}

}  // namespace

std::optional<std::uint64_t> RemainingBytes(std::FILE* file) {
  const std::int64_t here = Position(file);
  if (here < 0 || !Seek(file, 0, SEEK_END)) {
    return std::nullopt;
  }
  const std::int64_t end = Position(file);
  if (!Seek(file, here, SEEK_SET) || end < here) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(end - here);
}

bool ReadUint32(std::FILE* file, std::uint32_t& value) {
  std::uint32_t stored = 0;
  if (std::fread(&stored, sizeof(stored), 1, file) != 1) {
    return false;
  }
  value = Ordered(stored);
  return true;
}

bool ReadInt32(std::FILE* file, std::int32_t& value) {
  std::uint32_t bits = 0;
  if (!ReadUint32(file, bits)) {
    return false;
  }
  value = static_cast<std::int32_t>(bits);
  return true;
}

bool ReadDoubles(std::FILE* file, double* values, std::size_t count) {
  if (count == 0) {
    return true;
  }
  if (std::fread(values, sizeof(double), count, file) != count) {
    return false;
  }
  ToLittleEndian(values, count);
  return true;
}

void ToLittleEndian(double* values, std::size_t count) {
  if constexpr (kSwaps) {
    std::transform(values, values + count, values, Ordered<double>);
  }
}

bool WriteUint32(std::FILE* file, std::uint32_t value) {
  const std::uint32_t stored = Ordered(value);
  return std::fwrite(&stored, sizeof(stored), 1, file) == 1;
}

bool WriteInt32(std::FILE* file, std::int32_t value) {
  return WriteUint32(file, static_cast<std::uint32_t>(value));
}

bool WriteDoubles(std::FILE* file, const double* values, std::size_t count) {
  if (count == 0) {
    return true;
  }
  if constexpr (!kSwaps) {
    return std::fwrite(values, sizeof(double), count, file) == count;
  }
  return std::all_of(values, values + count, [&](double value) {
    const double stored = Ordered(value);
    return std::fwrite(&stored, sizeof(stored), 1, file) == 1;
  });
}

std::optional<std::string> ReadBlock(std::FILE* file) {
  std::uint32_t size = 0;
  if (!ReadUint32(file, size)) {
    return std::nullopt;
  }
  const std::optional<std::uint64_t> remaining = RemainingBytes(file);
  if (!remaining || size > *remaining) {
    return std::nullopt;
  }
  std::string bytes(size, '\0');
  if (std::fread(bytes.data(), 1, size, file) != size) {
    return std::nullopt;
  }
  return bytes;
}

bool WriteBlock(std::FILE* file, const std::string& bytes) {
  return bytes.size() <= UINT32_MAX && WriteUint32(file, static_cast<std::uint32_t>(bytes.size())) &&
         std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

}  // namespace base
