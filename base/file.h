#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Whole files, byte for byte.
namespace base {

enum class TReadOutcome { kRead, kAbsent, kTooLarge };

/// Reads small regular files whole, one after the other, with as few calls of the system as can be: these are all that
/// the time goes into. It is fastest where a file has the size of the one before.
class TFileReader {
 public:
  /// Reads the file of exactly this name. Absent is also what cannot be read or is something else than a regular file;
  /// too large is one of more than `most` bytes. Nothing is read from a pipe or a device, and none is waited for.
  TReadOutcome Read(const std::string& path, std::uint64_t most);

  /// The bytes of the file that was read last, until the next Read.
  std::string_view GetBytes() const { return {bytes.data(), size}; }

 private:
  bool HasSizeAsBefore(int descriptor);
  TReadOutcome ReadToSize(int descriptor, std::uint64_t most);

  // One byte longer than the file.
  std::vector<char> bytes;
  std::size_t size = 0;
};

/// The bytes of the file that base::NativePath finds; nothing if it cannot be opened or read.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces the contents of the file of exactly this name: overwriting a file that is only spelt like it would lose
/// another's data. False if it cannot be opened or not all bytes could be written.
bool WriteFile(const std::string& path, const std::string& bytes);

/// The same, with an earlier file whole until the new one is: it is written beside the earlier one and then takes its
/// place. False, and nothing left behind, if any step fails.
bool ReplaceFile(const std::string& path, const void* bytes, std::size_t count);

/// The number of bytes from the current position to the end of an open binary file; nothing for a file without
/// positions, such as a pipe. A reader tests sizes found in a file against it before it asks for memory.
std::optional<std::uint64_t> RemainingBytes(std::FILE* file);

}  // namespace base
