#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace base {

/// The bytes of a file in memory, read by the system as they are touched and dropped again where it needs the room.
class TMappedFile {
 public:
  /// Maps the file of exactly this name. Nothing if it cannot be opened or is empty.
  static std::optional<TMappedFile> Open(const std::string& path);

  const std::byte* GetBytes() const { return bytes.get(); }
  std::size_t GetSize() const { return size; }

 private:
  TMappedFile() = default;

  /// Shared, so that a copy is another look at the same mapping.
  std::shared_ptr<const std::byte> bytes;
  std::size_t size = 0;
};

}  // namespace base
