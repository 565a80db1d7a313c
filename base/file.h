#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// Whole files, byte for byte.
namespace base {

/// A regular file that is read in one go, with no buffer in between: of many small files a buffer would cost more than
/// their bytes.
class TRegularFile {
 public:
  /// Opens the file of exactly this name.
  explicit TRegularFile(const std::string& path);
  ~TRegularFile();
  TRegularFile(const TRegularFile&) = delete;
  TRegularFile& operator=(const TRegularFile&) = delete;

  /// False if there is no such file, it cannot be opened, or it is something else than a regular file.
  bool IsOpen() const { return descriptor >= 0; }

  /// In bytes, at the time of opening.
  std::uint64_t GetSize() const { return size; }

  /// Reads the next bytes. False if there are not that many.
  bool Read(void* bytes, std::size_t count);

 private:
  int descriptor = -1;
  std::uint64_t size = 0;
};

/// The bytes of the file that base::NativePath finds; nothing if it cannot be opened or read.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces the contents of the file of exactly this name: overwriting a file that is only spelt like it would lose
/// another's data. False if it cannot be opened or not all bytes could be written.
bool WriteFile(const std::string& path, const std::string& bytes);

/// The same, with an earlier file whole until the new one is: it is written beside the earlier one and then takes its
/// place. False, and nothing left behind, if any step fails.
bool ReplaceFile(const std::string& path, const void* bytes, std::size_t count);

}  // namespace base
