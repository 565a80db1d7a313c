#include "base/console.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#include "base/native-path.h"

namespace base {

namespace {

volatile std::sig_atomic_t interrupted = 0;

#ifdef _WIN32

int OpenForReading(const std::string& path) {
  return _open(path.c_str(), _O_RDONLY | _O_BINARY);
}
void Close(int descriptor) {
  _close(descriptor);
}
int ReadSome(int descriptor, char* data, std::size_t size) {
  return _read(descriptor, data, static_cast<unsigned int>(size));
}

#else

// The handler writes a byte here, so that a reader that waits in poll() wakes up even if the signal arrived just
// before.
std::array<int, 2> wakeUp = {-1, -1};

int OpenForReading(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}
void Close(int descriptor) {
  close(descriptor);
}

ssize_t ReadSome(int descriptor, char* data, std::size_t size) {
  for (;;) {
    std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {wakeUp[0], POLLIN, 0}}};
    // Regular files are always ready, so the wait costs them nothing.
    poll(waits.data(), waits.size(), -1);
    if (Interrupted()) {
      return 0;
    }
    const ssize_t count = read(descriptor, data, size);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
      return count;
    }
  }
}

#endif

extern "C" void OnInterrupt(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
#ifndef _WIN32
  const int savedError = errno;
  [[maybe_unused]] const ssize_t written = write(wakeUp[1], "!", 1);
  errno = savedError;
#endif
}

}  // namespace

std::FILE* TakeStandardOutput() {
  std::fflush(stdout);
#ifdef _WIN32
  const int own = _dup(_fileno(stdout));
  if (own < 0 || _dup2(_fileno(stderr), _fileno(stdout)) < 0) {
    return nullptr;
  }
  _setmode(own, _O_BINARY);
  return _fdopen(own, "wb");
#else
  const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  if (own < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    return nullptr;
  }
  return fdopen(own, "wb");
#endif
}

bool IsTerminal(std::FILE* stream) {
#ifdef _WIN32
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}

void CatchSignals() {
#ifndef _WIN32
  std::signal(SIGPIPE, SIG_IGN);
  if (pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    return;
  }
#endif
  std::signal(SIGINT, OnInterrupt);
}

bool Interrupted() {
  return interrupted != 0;
}

TLineReader::TLineReader() = default;

TLineReader::TLineReader(const std::string& path) : descriptor(OpenForReading(NativePath(path))) {
  // A directory opens, but only a read tells that it holds no lines.
  if (IsOpen() && IsDirectory(path)) {
    Close(descriptor);
    descriptor = -1;
  }
}

TLineReader::~TLineReader() {
  if (descriptor > 0) {
    Close(descriptor);
  }
}

bool TLineReader::ReadBlock() {
  if (atEnd) {
    return false;
  }
  pending.erase(0, position);
  position = 0;
  std::array<char, 65536> block;
  const auto count = ReadSome(descriptor, block.data(), block.size());
  if (count <= 0) {
    atEnd = true;
    return false;
  }
  pending.append(block.data(), static_cast<std::size_t>(count));
  return true;
}

bool TLineReader::Next(std::string& line) {
  std::size_t searched = 0;
  for (;;) {
    if (Interrupted()) {
      return false;
    }
    const std::size_t end = pending.find('\n', position + searched);
    if (end != std::string::npos) {
      line.assign(pending, position, end - position);
      position = end + 1;
      break;
    }
    searched = pending.size() - position;
    if (!ReadBlock()) {
      line.assign(pending, position);
      position = pending.size();
      if (Interrupted() || line.empty()) {
        return false;
      }
      break;
    }
  }
  if (!line.empty() && line.back() == '\r') {
    line.pop_back();
  }
  return true;
}

}  // namespace base
