#include "base/file-stamp.h"

#include <cstdlib>
#include <ctime>

#include <sys/stat.h>

#include "base/native-path.h"

namespace base {

bool TFileStamp::IsSettled() const {
  // An absolute difference: a time in the future, from a server whose clock runs ahead, must not count as settled
  // forever. Two seconds is the resolution of FAT, the coarsest of the file systems that are in use.
  return std::abs(static_cast<std::int64_t>(std::time(nullptr)) - seconds) > 2;
}

std::optional<TFileStamp> StampFile(const std::string& path) {
#ifdef _WIN32
  struct _stat64 status;
  if (_stat64(path.c_str(), &status) != 0 || (status.st_mode & _S_IFMT) != _S_IFREG) {
    return std::nullopt;
  }
  return TFileStamp{static_cast<std::uint64_t>(status.st_size), status.st_mtime, 0};
#else
  struct stat status;
  // Most paths are spelled as the file is, and a collection asks once for each image.
  if (stat(path.c_str(), &status) != 0 && stat(NativePath(path).c_str(), &status) != 0) {
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return TFileStamp{static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
                    static_cast<std::int32_t>(status.st_mtim.tv_nsec)};
#endif
}

}  // namespace base
