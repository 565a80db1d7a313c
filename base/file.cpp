#include "base/file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>

#include <boost/filesystem.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "base/native-path.h"

namespace base {

namespace {

struct TFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

using TFilePointer = std::unique_ptr<std::FILE, TFileCloser>;

#ifdef _WIN32

using TStatus = struct _stat64;

int Open(const std::string& path, int flags) {
  return _open(path.c_str(), flags | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}
bool GetStatus(int descriptor, TStatus& status) {
  return _fstat64(descriptor, &status) == 0;
}
bool IsRegular(const TStatus& status) {
  return (status.st_mode & _S_IFMT) == _S_IFREG;
}
auto ReadSome(int descriptor, void* bytes, std::size_t count) {
  return _read(descriptor, bytes, static_cast<unsigned int>(count));
}
auto WriteSome(int descriptor, const void* bytes, std::size_t count) {
  return _write(descriptor, bytes, static_cast<unsigned int>(count));
}
bool Close(int descriptor) {
  return _close(descriptor) == 0;
}

#else

using TStatus = struct stat;

// Without O_NONBLOCK a pipe in the place of a file would wait for its other end.
int Open(const std::string& path, int flags) {
  return open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
}
bool GetStatus(int descriptor, TStatus& status) {
  return fstat(descriptor, &status) == 0;
}
bool IsRegular(const TStatus& status) {
  return S_ISREG(status.st_mode);
}
auto ReadSome(int descriptor, void* bytes, std::size_t count) {
  return read(descriptor, bytes, count);
}
auto WriteSome(int descriptor, const void* bytes, std::size_t count) {
  return write(descriptor, bytes, count);
}
bool Close(int descriptor) {
  return close(descriptor) == 0;
}

#endif

/// Calls `transfer(bytes, count)` until all is done. The system may do it in pieces, and a signal may interrupt it.
template <typename TByte, typename TTransfer>
bool TransferAll(TByte* bytes, std::size_t count, const TTransfer& transfer) {
  while (count > 0) {
    const auto done = transfer(bytes, count);
    if (done > 0) {
      bytes += done;
      count -= static_cast<std::size_t>(done);
    } else if (done == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace

TRegularFile::TRegularFile(const std::string& path) : descriptor(Open(path, O_RDONLY)) {
  TStatus status = {};
  if (IsOpen() && GetStatus(descriptor, status) && IsRegular(status)) {
    size = static_cast<std::uint64_t>(status.st_size);
  } else if (IsOpen()) {
    Close(descriptor);
    descriptor = -1;
  }
}

TRegularFile::~TRegularFile() {
  if (IsOpen()) {
    Close(descriptor);
  }
}

bool TRegularFile::Read(void* bytes, std::size_t count) {
  return TransferAll(static_cast<char*>(bytes), count,
                     [this](void* next, std::size_t rest) { return ReadSome(descriptor, next, rest); });
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

bool ReplaceFile(const std::string& path, const void* bytes, std::size_t count) {
  // O_EXCL makes the file or fails. Where nothing stands yet, nothing can be lost, and the detour is saved.
  std::string target = path;
  int descriptor = Open(target, O_WRONLY | O_CREAT | O_EXCL);
  if (descriptor < 0) {
    target += ".new";
    descriptor = Open(target, O_WRONLY | O_CREAT | O_TRUNC);
  }
  if (descriptor < 0) {
    return false;
  }
  const bool filled = TransferAll(static_cast<const char*>(bytes), count, [=](const void* next, std::size_t rest) {
    return WriteSome(descriptor, next, rest);
  });
  const bool written = Close(descriptor) && filled;
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
