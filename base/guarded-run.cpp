#include "base/guarded-run.h"

#ifdef _WIN32

namespace base {

bool CanRunGuarded() {
  return false;
}

TAnswer RunGuarded(const boost::function<bool(std::FILE* answer)>&, const TGuardLimits&) {
  return nullptr;
}

}  // namespace base

#else

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "base/child-process.h"
#include "base/memory.h"

namespace base {

namespace {

TAnswer OpenAnswer() {
#ifdef __linux__
  // In memory and without a name, so that an answer of many megabytes costs neither a disk nor a pipe that somebody has
  // to drain meanwhile. Both processes hold it by the same descriptor.
  const int descriptor = memfd_create("answer", MFD_CLOEXEC);
  return TAnswer(descriptor < 0 ? nullptr : fdopen(descriptor, "w+b"));
#else
  return TAnswer(std::tmpfile());
#endif
}

void Limit(decltype(RLIMIT_CPU) resource, rlim_t most) {
  rlimit limit = {};
  if (getrlimit(resource, &limit) == 0) {
    // The hard limit too: a library must not be able to raise its own.
    limit.rlim_max = std::min(limit.rlim_max, most);
    limit.rlim_cur = std::min(limit.rlim_cur, most);
    setrlimit(resource, &limit);
  }
}

void BeGuarded(const boost::function<bool(std::FILE* answer)>& work, const TGuardLimits& limits, std::FILE* answer,
               int toParent) {
  // A library that calls exit() would run what the program has registered, such as the toolkit's farewell to the
  // screen.
  std::atexit([] { _exit(EXIT_FAILURE); });
  // Keys that are meant for the program reach this process, too.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal, SIG_IGN);
  }
  if (const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC); nowhere >= 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      dup2(nowhere, stream);
    }
  }
  Limit(RLIMIT_CPU, static_cast<rlim_t>(limits.processorSeconds));
  // The limit of the address space below does not count an answer that is written and not mapped; this one does.
  Limit(RLIMIT_FSIZE, limits.memory);
  // On top of what the parent has in use, which the copy begins with; not of freed blocks, which it could use again.
  ReturnFreedMemory();
  if (const auto mapped = MappedMemory()) {
    Limit(RLIMIT_AS, *mapped + limits.memory);
  }
  try {
    // Flushed before the byte goes out: the parent reads the file as soon as it has that byte, and ends this process.
    if (work(answer) && std::fflush(answer) == 0) {
      const char done = '.';
      [[maybe_unused]] const ssize_t written = write(toParent, &done, 1);
    }
  } catch (...) {
    // No byte says all that there is to say.
  }
}

/// True once the byte has come that stands behind a whole answer.
bool Await(int fromChild, int seconds) {
  // Seconds are counted and not taken from a clock, which would go on while the user has suspended both processes.
  for (int waited = 0; waited < seconds;) {
    pollfd wait = {fromChild, POLLIN, 0};
    const int ready = poll(&wait, 1, 1000);
    char done = 0;
    if (ready > 0) {
      const ssize_t count = read(fromChild, &done, 1);
      if (count >= 0 || errno != EINTR) {
        return count == 1;
      }
    } else if (ready == 0) {
      ++waited;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return false;
}

}  // namespace

bool CanRunGuarded() {
  return true;
}

TAnswer RunGuarded(const boost::function<bool(std::FILE* answer)>& work, const TGuardLimits& limits) {
  TAnswer answer = OpenAnswer();
  if (!answer) {
    return nullptr;
  }
  const auto child = StartChild([&](int toParent) { BeGuarded(work, limits, answer.get(), toParent); });
  if (!child) {
    return nullptr;
  }
  const bool isWhole = Await(child->fromChild, limits.waitedSeconds);
  EndChild(*child);
  if (!isWhole) {
    return nullptr;
  }
  // The two processes share the position in the file, which is at its end now.
  std::rewind(answer.get());
  return answer;
}

}  // namespace base

#endif
