#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Whole files, byte for byte. Nothing here waits for a stranger: what the program itself names or reads is a regular
/// file, or is refused.
namespace base {

/// Absent: nothing stands there, or something else than a regular file. Unreadable: a regular file that the system does
/// not let us open or read.
enum class TReadOutcome { kRead, kAbsent, kTooLarge, kUnreadable };

/// Reads small regular files whole, one after the other, with as few calls of the system as can be: these are all that
/// the time goes into. It is fastest where a file has the size of the one before.
class TFileReader {
 public:
  /// Reads the file of exactly this name. Too large is one of more than `most` bytes. Nothing is read from a pipe or a
  /// device.
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

/// Reads the regular file that base::NativePath finds, of any size. Unless the outcome is kRead, `bytes` is empty.
TReadOutcome ReadFile(const std::string& path, std::string& bytes);

/// The same where the reason of a failure does not matter.
std::optional<std::string> ReadFile(const std::string& path);

/// Writes the regular file of exactly this name: overwriting a file whose name differs in case only would lose
/// another's data. An earlier file keeps its rights and stays whole until the new one is: that is written beside it and
/// then takes its place. A symbolic link stays, and the file that it points to is replaced. False, with nothing left
/// behind, if any step fails, if something else than a regular file stands there, or if the earlier file is
/// write-protected.
bool ReplaceFile(const std::string& path, const void* bytes, std::size_t count);

/// An output that the user names: a regular file, which is replaced as above, or anything that takes bytes without
/// being waited for, such as /dev/stdout or a pipe that has a reader.
class TNamedOutput {
 public:
  /// Finds out whether `path` can be written. What is no regular file is kept open, so that its reader sees one output
  /// and not the end of an empty one first. The file that standard output or standard error already goes to is added
  /// to and not replaced: construct the object before either is redirected.
  explicit TNamedOutput(const std::string& path);
  ~TNamedOutput();
  TNamedOutput(const TNamedOutput&) = delete;
  TNamedOutput& operator=(const TNamedOutput&) = delete;

  bool IsOpen() const { return isOpen; }

  /// Writes the whole output. False if it is not open or not all could be written.
  bool Write(const std::string& bytes);

 private:
  std::string path;
  // Negative for a file that is to be replaced.
  int descriptor = -1;
  bool isOpen = false;
};

/// Writes an output that the user names, at once.
bool WriteFile(const std::string& path, const std::string& bytes);

/// The number of bytes from the current position to the end of an open binary file; nothing for a file without
/// positions, such as a pipe. A reader tests sizes found in a file against it before it asks for memory.
std::optional<std::uint64_t> RemainingBytes(std::FILE* file);

}  // namespace base
