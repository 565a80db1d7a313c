#include "classifiers/model-storage.h"

#include <algorithm>

#include "base/file.h"
#include "base/little-endian.h"

namespace {

bool ReadUint32(std::FILE* file, std::uint32_t& value) {
  std::uint32_t stored = 0;
  if (std::fread(&stored, sizeof(stored), 1, file) != 1) {
    return false;
  }
  value = base::ToLittleEndian(stored);
  return true;
}

bool WriteUint32(std::FILE* file, std::uint32_t value) {
  const std::uint32_t stored = base::ToLittleEndian(value);
  return std::fwrite(&stored, sizeof(stored), 1, file) == 1;
}

}  // namespace

bool ReadInt32(std::FILE* file, std::int32_t& value) {
  // Through the unsigned number, whose bytes are turned around without touching a sign.
  std::uint32_t bits = 0;
  if (!ReadUint32(file, bits)) {
    return false;
  }
  // Two's complement on every machine since C++20.
  value = static_cast<std::int32_t>(bits);
  return true;
}

bool ReadDoubles(std::FILE* file, double* values, std::size_t count) {
  // `values` may be null then, which fread must not be given.
  if (count == 0) {
    return true;
  }
  if (std::fread(values, sizeof(double), count, file) != count) {
    return false;
  }
  base::ToLittleEndian(values, count);
  return true;
}

bool WriteInt32(std::FILE* file, std::int32_t value) {
  return WriteUint32(file, static_cast<std::uint32_t>(value));
}

bool WriteDoubles(std::FILE* file, const double* values, std::size_t count) {
  return std::all_of(values, values + count, [&](double value) {
    // A copy of each, as the caller's numbers stay in the machine's order.
    base::ToLittleEndian(&value, 1);
    return std::fwrite(&value, sizeof(value), 1, file) == 1;
  });
}

std::optional<std::string> ReadBlock(std::FILE* file) {
  std::uint32_t size = 0;
  if (!ReadUint32(file, size)) {
    return std::nullopt;
  }
  // The size comes from a file that may be damaged or forged: up to 4 GiB would be asked for on its word.
  const std::optional<std::uint64_t> remaining = base::RemainingBytes(file);
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

bool StoreThroughFile(std::FILE* file, const std::string& prefix, const std::function<bool(const char* name)>& save,
                      const std::function<bool(std::string_view text)>& isSound) {
  const TTemporaryFile temporary(prefix);
  if (!temporary.Exists() || !save(temporary.GetName().c_str())) {
    return false;
  }
  const std::optional<std::string> text = temporary.Read();
  // Read back and checked, because the libraries report neither a full disk nor a short write.
  return text && isSound(*text) && WriteBlock(file, *text);
}
