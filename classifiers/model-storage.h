#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/temporary-file.h"

// What the classifiers store themselves in. Numbers are little-endian on every platform, doubles are 64-bit IEEE. All
// functions work at the current position of an open binary file and leave it behind what they read or wrote.

/// False at the end of the file or after an error; the number is then unchanged.
bool ReadInt32(std::FILE* file, std::int32_t& value);

/// False if not all could be read; what stands in `values` is then undefined.
bool ReadDoubles(std::FILE* file, double* values, std::size_t count);

/// False if not all could be written.
bool WriteInt32(std::FILE* file, std::int32_t value);
bool WriteDoubles(std::FILE* file, const double* values, std::size_t count);

/// A block: its size in bytes as 32 bits without a sign, then the bytes. Reading gives nothing, and asks for no memory,
/// if the file does not hold that many; writing is false for a block whose size does not fit.
std::optional<std::string> ReadBlock(std::FILE* file);
bool WriteBlock(std::FILE* file, const std::string& bytes);

/// Writes a block with what a library saves that knows files by name only. `save(name)` saves to a file of its own:
/// `prefix`, a number, ".dat" in the working directory, gone on return. False if that file cannot be made, if `save` is
/// false, or if `isSound` does not accept what it left there: libraries do not notice a full disk.
bool StoreThroughFile(std::FILE* file, const std::string& prefix, const std::function<bool(const char* name)>& save,
                      const std::function<bool(std::string_view text)>& isSound);

/// What `load(name)` makes of a file with that text, a file as above. Null if the file cannot be made.
template <typename TLoad>
auto LoadThroughFile(const std::string& text, const std::string& prefix, const TLoad& load) -> decltype(load("")) {
  const TTemporaryFile temporary(prefix);
  return temporary.Write(text) ? load(temporary.GetName().c_str()) : nullptr;
}
