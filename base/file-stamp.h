#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace base {

/// What tells one state of a file from another without reading it: its size in bytes, and the time of its last change
/// since 1970, as finely as the file system keeps it.
struct TFileStamp {
  std::uint64_t size = 0;
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;

  bool operator==(const TFileStamp&) const = default;

  /// False for a file that changed within the last two seconds: it may change again without a trace, since no file
  /// system's clock is coarser than that.
  bool IsSettled() const;
};

/// The stamp of the regular file that base::NativePath finds; nothing if there is none.
std::optional<TFileStamp> StampFile(const std::string& path);

}  // namespace base
