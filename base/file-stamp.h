#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace base {

/// What tells the contents of a file from others without reading them.
struct TFileStamp {
  /// As base::FileIdentity gives it.
  std::string identity;
  std::uintmax_t size = 0;
  std::filesystem::file_time_type changed;

  bool operator==(const TFileStamp&) const = default;

  /// False for a file that changed within the last two seconds: it may change again without a trace, since no file
  /// system's clock is coarser than that.
  bool IsSettled() const;
};

/// The stamp of the regular file that base::NativePath finds; nothing if there is none.
std::optional<TFileStamp> StampFile(const std::string& path);

}  // namespace base
