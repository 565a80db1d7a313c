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
// There is no such call.
std::ptrdiff_t ReadFromStart(int /*descriptor*/, void* /*bytes*/, std::size_t /*count*/) {
  return -1;
}
auto WriteSome(int descriptor, const void* bytes, std::size_t count) {
  return _write(descriptor, bytes, static_cast<unsigned int>(count));
}
bool Close(int descriptor) {
  return _close(descriptor) == 0;
}
std::int64_t Position(std::FILE* file) {
  return _ftelli64(file);
}
bool Seek(std::FILE* file, std::int64_t offset, int origin) {
  return _fseeki64(file, offset, origin) == 0;
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
std::ptrdiff_t ReadFromStart(int descriptor, void* bytes, std::size_t count) {
  return pread(descriptor, bytes, count, 0);
}
auto WriteSome(int descriptor, const void* bytes, std::size_t count) {
  return write(descriptor, bytes, count);
}
bool Close(int descriptor) {
  return close(descriptor) == 0;
}
std::int64_t Position(std::FILE* file) {
  return ftello(file);
}
bool Seek(std::FILE* file, std::int64_t offset, int origin) {
  return fseeko(file, static_cast<off_t>(offset), origin) == 0;
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

TReadOutcome TFileReader::Read(const std::string& path, std::uint64_t most) {
  const int descriptor = Open(path, O_RDONLY);
  if (descriptor < 0) {
    return TReadOutcome::kAbsent;
  }
  const TReadOutcome outcome =
      size <= most && HasSizeAsBefore(descriptor) ? TReadOutcome::kRead : ReadToSize(descriptor, most);
  if (outcome != TReadOutcome::kRead) {
    size = 0;
  }
  Close(descriptor);
  return outcome;
}

/// Reads a file that gives as many bytes as the one before and not one more, without asking for its size. A pipe has no
/// first byte to go to, so that nothing is taken from it.
bool TFileReader::HasSizeAsBefore(int descriptor) {
  return size > 0 && ReadFromStart(descriptor, bytes.data(), size + 1) == static_cast<std::ptrdiff_t>(size);
}

TReadOutcome TFileReader::ReadToSize(int descriptor, std::uint64_t most) {
  TStatus status = {};
  if (!GetStatus(descriptor, status) || !IsRegular(status)) {
    return TReadOutcome::kAbsent;
  }
  if (static_cast<std::uint64_t>(status.st_size) > most) {
    return TReadOutcome::kTooLarge;
  }
  size = static_cast<std::size_t>(status.st_size);
  bytes.resize(size + 1);
  const bool isRead =
      TransferAll(bytes.data(), size, [=](void* next, std::size_t rest) { return ReadSome(descriptor, next, rest); });
  return isRead ? TReadOutcome::kRead : TReadOutcome::kAbsent;
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

std::optional<std::uint64_t> RemainingBytes(std::FILE* file) {
  const std::int64_t here = Position(file);
  if (here < 0 || !Seek(file, 0, SEEK_END)) {
    return std::nullopt;
  }
  const std::int64_t end = Position(file);
  if (!Seek(file, here, SEEK_SET) || end < here) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(end - here);
}

}  // namespace base
