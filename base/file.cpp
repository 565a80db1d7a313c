#include "base/file.h"

#include <array>

#include <boost/filesystem.hpp>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "base/native-path.h"

namespace base {

TFilePointer OpenRegularFile(const std::string& path) {
#ifdef _WIN32
  return TFilePointer(IsRegularFile(path) ? std::fopen(path.c_str(), "rb") : nullptr);
#else
  // Without O_NONBLOCK a pipe in the place of the file would wait for its writer.
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat status = {};
  if (descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    return TFilePointer(fdopen(descriptor, "rb"));
  }
  if (descriptor >= 0) {
    close(descriptor);
  }
  return nullptr;
#endif
}

std::optional<std::string> ReadFile(const std::string& path) {
  const TFilePointer file(std::fopen(NativePath(path).c_str(), "rb"));
  if (!file) {
    return std::nullopt;
  }
  std::string bytes;
  std::array<char, 65536> block;
  std::size_t count = 0;
  while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
    bytes.append(block.data(), count);
  }
  if (std::ferror(file.get()) != 0) {
    return std::nullopt;
  }
  return bytes;
}

bool WriteFile(const std::string& path, const std::string& bytes) {
  TFilePointer file(std::fopen(path.c_str(), "wb"));
  if (!file) {
    return false;
  }
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  // A full disk may show only when the last block goes out.
  return std::fclose(file.release()) == 0 && written;
}

bool ReplaceFile(const std::string& path, const std::function<bool(std::FILE*)>& write) {
  // "x" makes the file or fails. Where nothing stands yet, nothing can be lost, and the detour is saved.
  std::string target = path;
  TFilePointer file(std::fopen(target.c_str(), "wbx"));
  if (!file) {
    target += ".new";
    file.reset(std::fopen(target.c_str(), "wb"));
  }
  if (!file) {
    return false;
  }
  const bool filled = write(file.get());
  const bool written = std::fclose(file.release()) == 0 && filled;
  boost::system::error_code error;
  if (written && target != path) {
    boost::filesystem::rename(target, path, error);
  }
  if (!written || error) {
    std::remove(target.c_str());
    return false;
  }
  return true;
}

}  // namespace base
