#include "base/console.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>

#include <fcntl.h>
#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#include "base/native-path.h"
#include "base/text.h"

namespace base {

namespace {

// The one type that the C++ standard lets a signal handler and the rest of a program share.
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
    // A plain read() would miss a signal that arrives between the test of Interrupted() and the call: with SA_RESTART
    // it would wait for input that may never come. The pipe of the handler closes that gap ("self-pipe trick").
    std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {wakeUp[0], POLLIN, 0}}};
    // Regular files are always ready, so the wait costs them nothing.
    poll(waits.data(), waits.size(), -1);
    if (Interrupted()) {
      return 0;
    }
    // EAGAIN comes from a standard input that another program sharing the terminal has set to O_NONBLOCK. The poll()
    // above has waited by then, so that trying again costs no busy loop.
    const ssize_t count = read(descriptor, data, size);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
      return count;
    }
  }
}

#endif

#ifdef _WIN32
constexpr std::array kEndingSignals = {SIGINT, SIGTERM};
#else
// Ctrl-C; what timeout(1) and job schedulers send; the terminal is closed.
constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP};
#endif

/// Only what may be called while anything else is under way.
extern "C" void OnInterrupt(int /*signal*/) {
  constexpr std::string_view kMessage = "Ends after the command under way; once more ends at once\n";
  interrupted = 1;
  for (const int signal : kEndingSignals) {
    // The second one must end even a program that hangs in a library, so that it is not ours to handle any more.
    std::signal(signal, SIG_DFL);
  }
#ifdef _WIN32
  _write(2, kMessage.data(), static_cast<unsigned int>(kMessage.size()));
#else
  // A system call that the signal interrupted may be about to read errno.
  const int savedError = errno;
  [[maybe_unused]] ssize_t written = write(wakeUp[1], "!", 1);
  written = write(STDERR_FILENO, kMessage.data(), kMessage.size());
  errno = savedError;
#endif
}

/// Has OnInterrupt called at a signal, unless whoever started the program has it ignored, as nohup(1) does.
#ifdef _WIN32

void Catch(int signal) {
  if (std::signal(signal, OnInterrupt) == SIG_IGN) {
    std::signal(signal, SIG_IGN);
  }
}

#else

void Catch(int signal) {
  struct sigaction before = {};
  if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) {
    return;
  }
  struct sigaction action = {};
  action.sa_handler = OnInterrupt;
  // Libraries do not expect EINTR from their reads and writes. poll() is never restarted, which is what a waiting
  // reader needs.
  action.sa_flags = SA_RESTART;
  // A second signal waits until the first one has been answered, so that the message comes once and whole.
  for (const int other : kEndingSignals) {
    sigaddset(&action.sa_mask, other);
  }
  sigaction(signal, &action, nullptr);
}

#endif

}  // namespace

void FillStandardPlaces() {
#ifndef _WIN32
  // The lowest free descriptor is what open() gives, so that they are filled in this order.
  for (int place = STDIN_FILENO; place <= STDERR_FILENO; ++place) {
    if (fcntl(place, F_GETFD) < 0 && errno == EBADF) {
      // The wrong way round, for the failure that a closed one would have; what is said on standard error may vanish.
      open("/dev/null", place == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
    }
  }
#endif
}

std::FILE* TakeStandardOutput(bool verbose) {
  std::fflush(stdout);
#ifdef _WIN32
  const int own = _dup(_fileno(stdout));
  const int other = verbose ? _fileno(stderr) : _open("NUL", _O_WRONLY);
  if (own < 0 || other < 0 || _dup2(other, _fileno(stdout)) < 0) {
    return nullptr;
  }
  _setmode(own, _O_BINARY);
  return _fdopen(own, "wb");
#else
  // From 3 on: where the caller closed standard input or error, the new descriptor must not become one of them. Closed
  // on exec, so that a gnuplot that lives on does not keep the reader of our output waiting for its end.
  const bool isForWriting = (fcntl(STDOUT_FILENO, F_GETFL) & O_ACCMODE) != O_RDONLY;
  const int own = isForWriting ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3) : -1;
  const int other = verbose ? STDERR_FILENO : open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (own < 0 || other < 0 || dup2(other, STDOUT_FILENO) < 0) {
    return nullptr;
  }
  return fdopen(own, "wb");
#endif
}

bool Print(std::FILE* stream, std::string_view text) {
#ifdef _WIN32
  const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  return std::fflush(stream) == 0 && written;
#else
  if (std::fflush(stream) != 0) {
    return false;
  }
  // Past the stream's buffer, which loses what a pipe in the mode O_NONBLOCK does not take at once. Another program
  // that shares our terminal or pipe can have set that mode.
  while (!text.empty()) {
    const ssize_t count = write(fileno(stream), text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      pollfd wait = {fileno(stream), POLLOUT, 0};
      poll(&wait, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
#endif
}

bool IsTerminal(std::FILE* stream) {
#ifdef _WIN32
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}

void MakeFileLimitAnError() {
#ifndef _WIN32
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

void CatchSignals() {
  MakeFileLimitAnError();
#ifndef _WIN32
  std::signal(SIGPIPE, SIG_IGN);
  if (pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    return;
  }
#endif
  for (const int signal : kEndingSignals) {
    Catch(signal);
  }
}

int SignalDescriptor() {
#ifdef _WIN32
  return -1;
#else
  return wakeUp[0];
#endif
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
  // 0 is standard input, which nobody here opened.
  if (descriptor > 0) {
    Close(descriptor);
  }
}

bool TLineReader::IsTerminal() const {
#ifdef _WIN32
  return _isatty(descriptor) != 0;
#else
  return isatty(descriptor) != 0;
#endif
}

bool TLineReader::BeginsAsText() {
  // What was read stays in `pending`, so that a pipe loses nothing by being looked at.
  return !ReadBlock() || pending.find('\0') == std::string::npos;
}

bool TLineReader::ReadBlock() {
  if (atEnd) {
    return false;
  }
  // Once a block and not once a line, which would take a time that grows with the square of the lines in a block.
  pending.erase(0, position);
  position = 0;
  std::array<char, 65536> block;
  const auto count = ReadSome(descriptor, block.data(), block.size());
  if (count <= 0) {
    atEnd = true;
    hasFailed = count < 0;
    return false;
  }
  pending.append(block.data(), static_cast<std::size_t>(count));
  return true;
}

bool TLineReader::Next(std::string& line) {
  // What has been searched for a line end is not searched again: a line of many megabytes takes a time in proportion.
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
      if (Interrupted() || hasFailed || (isFirst ? SkipByteOrderMark(line).empty() : line.empty())) {
        return false;
      }
      break;
    }
  }
  if (isFirst) {
    line.erase(0, line.size() - SkipByteOrderMark(line).size());
    isFirst = false;
  }
  if (!line.empty() && line.back() == '\r') {
    line.pop_back();
  }
  return true;
}

}  // namespace base
