#include "base/file.h"

#include <array>
#include <cerrno>
#include <cstdio>

#include <boost/filesystem.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#ifdef _WIN32
#include <io.h>
#include <process.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#include "base/native-path.h"

namespace base {

namespace {

#ifdef _WIN32

using TStatus = struct _stat64;

constexpr const char* kSeparators = "/\\";

int Open(const std::string& path, int flags) {
  return _open(path.c_str(), flags | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}
bool GetStatus(int descriptor, TStatus& status) {
  return _fstat64(descriptor, &status) == 0;
}
bool GetStatus(const std::string& path, TStatus& status) {
  return _stat64(path.c_str(), &status) == 0;
}
bool IsRegular(const TStatus& status) {
  return (status.st_mode & _S_IFMT) == _S_IFREG;
}
bool IsWritable(const std::string& path) {
  constexpr int kWrite = 2;
  return _access(path.c_str(), kWrite) == 0;
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
int ProcessNumber() {
  return _getpid();
}
// The C library's call does not replace a file here.
bool Rename(const std::string& from, const std::string& to) {
  boost::system::error_code error;
  boost::filesystem::rename(from, to, error);
  return !error;
}
bool GetOwnStatus(const std::string& path, TStatus& status) {
  return GetStatus(path, status);
}
bool FollowLink(std::string& /*path*/, const TStatus& /*status*/) {
  return false;
}
bool TakeOverRights(int /*descriptor*/, const TStatus& /*earlier*/) {
  return true;
}
// Files have no numbers to compare.
int DuplicateStandardStream(const TStatus& /*status*/) {
  return -1;
}
std::int64_t Position(std::FILE* file) {
  return _ftelli64(file);
}
bool Seek(std::FILE* file, std::int64_t offset, int origin) {
  return _fseeki64(file, offset, origin) == 0;
}

#else

using TStatus = struct stat;

// A backslash is a character of a name like any other here.
constexpr const char* kSeparators = "/";

// Without O_NONBLOCK a pipe in the place of a file would wait for its other end; a terminal shall not become ours.
int Open(const std::string& path, int flags) {
  return open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
}
bool GetStatus(int descriptor, TStatus& status) {
  return fstat(descriptor, &status) == 0;
}
bool GetStatus(const std::string& path, TStatus& status) {
  return stat(path.c_str(), &status) == 0;
}
bool IsRegular(const TStatus& status) {
  return S_ISREG(status.st_mode);
}
bool IsWritable(const std::string& path) {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}
auto ReadSome(int descriptor, void* bytes, std::size_t count) {
  return read(descriptor, bytes, count);
}
std::ptrdiff_t ReadFromStart(int descriptor, void* bytes, std::size_t count) {
  return pread(descriptor, bytes, count, 0);
}
bool Close(int descriptor) {
  return close(descriptor) == 0;
}
int ProcessNumber() {
  return getpid();
}
bool Rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

/// A pipe whose reader is slow is full at times, and says so in place of waiting; that reader is there, so that we may.
ssize_t WriteSome(int descriptor, const void* bytes, std::size_t count) {
  const ssize_t written = write(descriptor, bytes, count);
  if (written < 0 && errno == EAGAIN) {
    // TransferAll takes EINTR for "not yet, try again", which is what has happened.
    pollfd wait = {descriptor, POLLOUT, 0};
    poll(&wait, 1, -1);
    errno = EINTR;
  }
  return written;
}

/// Of a symbolic link, not of what it points to.
bool GetOwnStatus(const std::string& path, TStatus& status) {
  return lstat(path.c_str(), &status) == 0;
}

/// If `path` is a symbolic link by its status, makes it the path that the link holds.
bool FollowLink(std::string& path, const TStatus& status) {
  if (!S_ISLNK(status.st_mode)) {
    return false;
  }
  boost::system::error_code error;
  const boost::filesystem::path content = boost::filesystem::read_symlink(path, error);
  if (!error) {
    // The content of a relative link counts from the directory of the link, not from the working directory.
    path = content.is_absolute() ? content.string() : (boost::filesystem::path(path).parent_path() / content).string();
  }
  return !error;
}

/// Gives a new file the owner and the rights of the one whose place it takes.
bool TakeOverRights(int descriptor, const TStatus& earlier) {
  TStatus status = {};
  if (!GetStatus(descriptor, status)) {
    return false;
  }
  if (status.st_uid != earlier.st_uid || status.st_gid != earlier.st_gid) {
    // Only root may give a file away. Where we may not, ours has the same rights at least.
    [[maybe_unused]] const int ignored = fchown(descriptor, earlier.st_uid, earlier.st_gid);
  }
  // Only the nine bits of rights: a new file of ours must not become set-user-ID because an earlier one of somebody
  // else was.
  return status.st_mode == earlier.st_mode || fchmod(descriptor, earlier.st_mode & 0777) == 0;
}

/// Another descriptor of standard output or standard error if that is the file of this status; negative if neither is.
int DuplicateStandardStream(const TStatus& status) {
  // Device and inode together name a file; two paths may lead to the same one, such as /dev/stdout and the file it was
  // redirected to.
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    TStatus own = {};
    if (GetStatus(stream, own) && own.st_dev == status.st_dev && own.st_ino == status.st_ino) {
      return fcntl(stream, F_DUPFD_CLOEXEC, 3);
    }
  }
  return -1;
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

bool WriteAll(int descriptor, const void* bytes, std::size_t count) {
  return TransferAll(static_cast<const char*>(bytes), count,
                     [=](const void* next, std::size_t rest) { return WriteSome(descriptor, next, rest); });
}

/// Why a file could not be opened just now.
TReadOutcome OutcomeOfFailedOpen(const std::string& path) {
  TStatus status = {};
  return errno != ENOENT && GetStatus(path, status) && IsRegular(status) ? TReadOutcome::kUnreadable
                                                                         : TReadOutcome::kAbsent;
}

TReadOutcome ReadToEnd(int descriptor, std::string& bytes) {
  TStatus status = {};
  if (!GetStatus(descriptor, status) || !IsRegular(status)) {
    return TReadOutcome::kAbsent;
  }
  // The size is a hint only: another program may be writing, and the kernel's own files have none.
  bytes.reserve(static_cast<std::size_t>(status.st_size));
  std::array<char, 65536> block;
  for (;;) {
    const auto count = ReadSome(descriptor, block.data(), block.size());
    if (count > 0) {
      bytes.append(block.data(), static_cast<std::size_t>(count));
    } else if (count == 0) {
      return TReadOutcome::kRead;
    } else if (errno != EINTR) {
      return TReadOutcome::kUnreadable;
    }
  }
}

/// Where a file is to be written.
struct TTarget {
  std::string path;
  /// The file that stands there; only if there is one.
  std::optional<TStatus> earlier;
};

/// Follows symbolic links to their end. Nothing if something stands there that must not be replaced.
std::optional<TTarget> FindTarget(std::string path) {
  if (path.empty()) {
    return std::nullopt;
  }
  // As many as Linux follows before it gives up with ELOOP. Links are followed by hand because the target that does not
  // exist yet has no canonical path.
  constexpr int kMostLinks = 40;
  for (int links = 0; links <= kMostLinks; ++links) {
    TStatus status = {};
    if (!GetOwnStatus(path, status)) {
      return errno == ENOENT ? std::optional<TTarget>({std::move(path), std::nullopt}) : std::nullopt;
    }
    if (FollowLink(path, status)) {
      continue;
    }
    // Renaming needs no right to write the file itself, so that a write-protected file would be replaced without a word
    // if nobody asked.
    if (!IsRegular(status) || !IsWritable(path)) {
      return std::nullopt;
    }
    return TTarget{std::move(path), status};
  }
  return std::nullopt;
}

/// A new file in the directory of another one, under a name of its own.
class TNeighbor {
 public:
  explicit TNeighbor(const std::string& target) {
    constexpr int kAttempts = 100;
    // With the process number the name is unique among those that run now; what an earlier process of that number left
    // behind is passed over by the attempts.
    static unsigned int counter = 0;
    const std::string start =
        target.substr(0, target.find_last_of(kSeparators) + 1) + ".tessimar-" + std::to_string(ProcessNumber()) + '-';
    for (int attempt = 0; attempt < kAttempts && descriptor < 0; ++attempt) {
      path = start + std::to_string(++counter);
      // O_EXCL makes the file or fails, so that nobody's file is lost and no link is followed.
      descriptor = Open(path, O_WRONLY | O_CREAT | O_EXCL);
      if (descriptor < 0 && errno != EEXIST) {
        return;
      }
    }
  }
  ~TNeighbor() {
    if (descriptor >= 0) {
      Close(descriptor);
      std::remove(path.c_str());
    }
  }
  TNeighbor(const TNeighbor&) = delete;
  TNeighbor& operator=(const TNeighbor&) = delete;

  /// Negative if the file could not be made.
  int GetDescriptor() const { return descriptor; }

  /// Closes the file and gives it the other's name. Where that fails the file goes.
  bool TakePlaceOf(const std::string& target) {
    // A full disk may show only here.
    const bool isClosed = Close(descriptor);
    descriptor = -1;
    if (isClosed && Rename(path, target)) {
      return true;
    }
    std::remove(path.c_str());
    return false;
  }

 private:
  std::string path;
  int descriptor = -1;
};

}  // namespace

TReadOutcome TFileReader::Read(const std::string& path, std::uint64_t most) {
  const int descriptor = Open(path, O_RDONLY);
  if (descriptor < 0) {
    size = 0;
    return OutcomeOfFailedOpen(path);
  }
  // Feature vectors of one collection have one length, so that nearly every file has the size of the one before; the
  // guess saves a call of the system for each of a hundred thousand files.
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
  // One byte more is asked for than the file should have: if it comes, the file is longer and the guess was wrong.
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
  return isRead ? TReadOutcome::kRead : TReadOutcome::kUnreadable;
}

TReadOutcome ReadFile(const std::string& path, std::string& bytes) {
  bytes.clear();
  const std::string nativePath = NativePath(path);
  const int descriptor = Open(nativePath, O_RDONLY);
  if (descriptor < 0) {
    return OutcomeOfFailedOpen(nativePath);
  }
  const TReadOutcome outcome = ReadToEnd(descriptor, bytes);
  if (outcome != TReadOutcome::kRead) {
    bytes.clear();
  }
  Close(descriptor);
  return outcome;
}

std::optional<std::string> ReadFile(const std::string& path) {
  std::string bytes;
  return ReadFile(path, bytes) == TReadOutcome::kRead ? std::optional(std::move(bytes)) : std::nullopt;
}

bool ReplaceFile(const std::string& path, const void* bytes, std::size_t count) {
  const std::optional<TTarget> target = FindTarget(path);
  if (!target) {
    return false;
  }
  TNeighbor file(target->path);
  // The order matters: the rights come before the contents, so that no byte of a private file is ever readable to
  // others, and the name comes last, so that it always stands for something whole. There is no fsync(): after a power
  // cut the file system decides which of the two files is there.
  return file.GetDescriptor() >= 0 && (!target->earlier || TakeOverRights(file.GetDescriptor(), *target->earlier)) &&
         WriteAll(file.GetDescriptor(), bytes, count) && file.TakePlaceOf(target->path);
}

TNamedOutput::TNamedOutput(const std::string& thePath) : path(thePath) {
  TStatus status = {};
  const bool exists = GetStatus(thePath, status);
  if (exists) {
    descriptor = DuplicateStandardStream(status);
  }
  if (descriptor < 0 && exists && !IsRegular(status)) {
    descriptor = Open(thePath, O_WRONLY);
    isOpen = descriptor >= 0;
    return;
  }
  const std::optional<TTarget> target = descriptor < 0 ? FindTarget(thePath) : std::nullopt;
  isOpen = descriptor >= 0 || (target && TNeighbor(target->path).GetDescriptor() >= 0);
}

TNamedOutput::~TNamedOutput() {
  if (descriptor >= 0) {
    Close(descriptor);
  }
}

bool TNamedOutput::Write(const std::string& bytes) {
  if (descriptor < 0) {
    return isOpen && ReplaceFile(path, bytes.data(), bytes.size());
  }
  const bool isWritten = WriteAll(descriptor, bytes.data(), bytes.size());
  const bool isClosed = Close(descriptor);
  descriptor = -1;
  isOpen = false;
  return isWritten && isClosed;
}

bool WriteFile(const std::string& path, const std::string& bytes) {
  return TNamedOutput(path).Write(bytes);
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
