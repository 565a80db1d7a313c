#include "base/child-process.h"

#ifndef _WIN32

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace base {

namespace {

/// What is ignored stays ignored: that was the wish of whoever started the program.
void DropSignalHandlers() {
  // Numbers that the C library keeps for its own threads are refused by sigaction() and passed over.
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN && action.sa_handler != SIG_DFL) {
      std::signal(signal, SIG_DFL);
    }
  }
}

}  // namespace

std::optional<TChildProcess> StartChild(const boost::function<void(int toParent)>& work) {
  std::array<int, 2> ends;
  // Neither end may pass into a program that is started meanwhile: a stray copy of the writing end would keep the
  // reader from ever seeing the end of the pipe.
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return std::nullopt;
  }
  // No handler of this process may run in the copy, not even for a moment.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &before);
  // Asked before the fork: afterwards the child has only getppid(), which names another process once the parent is
  // gone.
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) {
    DropSignalHandlers();
    // Handlers go before the mask does: a signal that waits shall meet the default action.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
#ifdef __linux__
    // Whatever ends the parent shall end this process too, even in an endless loop.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    // A crash is a result here, and no reason to fill the disk or to wake a crash reporter.
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    close(ends[0]);
    // The parent may have ended before the call above: then no signal comes any more.
    if (getppid() == parent) {
      work(ends[1]);
    }
    // Not exit(): buffers and exit handlers are copies of the parent's, which will flush and run them itself.
    _exit(EXIT_FAILURE);
  }
  // Kept before the calls below can change it.
  const int reason = errno;
  sigprocmask(SIG_SETMASK, &before, nullptr);
  close(ends[1]);
  if (child < 0) {
    close(ends[0]);
    errno = reason;
    return std::nullopt;
  }
  return TChildProcess{child, ends[0]};
}

int EndChild(const TChildProcess& child) {
  // Safe even if the child has ended: until waitpid() it is a zombie, and its number cannot be given to a stranger.
  kill(child.process, SIGKILL);
  close(child.fromChild);
  int status = 0;
  // Always, or the child stays as a zombie until the program ends.
  while (waitpid(child.process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace base

#endif
