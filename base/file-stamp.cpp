#include "base/file-stamp.h"

#include <cstdlib>
#include <system_error>

#include "base/native-path.h"

namespace base {

bool TFileStamp::IsSettled() const {
  using namespace std::chrono_literals;
  return std::chrono::abs(std::filesystem::file_time_type::clock::now() - changed) > 2s;
}

std::optional<TFileStamp> StampFile(const std::string& path) {
  const std::string nativePath = NativePath(path);
  const std::filesystem::path file(std::u8string(nativePath.begin(), nativePath.end()));
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    return std::nullopt;
  }
  TFileStamp stamp;
  stamp.identity = FileIdentity(nativePath);
  stamp.size = std::filesystem::file_size(file, error);
  if (!error) {
    stamp.changed = std::filesystem::last_write_time(file, error);
  }
  return error ? std::nullopt : std::optional(stamp);
}

}  // namespace base
