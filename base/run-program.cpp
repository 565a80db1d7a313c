#include "base/run-program.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

#ifndef _WIN32
#include <cerrno>
#include <memory>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace base {

namespace {

#ifdef _WIN32
constexpr const char* kGnuplot = "gnuplot.exe ";
#else
constexpr const char* kGnuplot = "gnuplot ";

struct TCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// All that comes out of a pipe, which is closed then.
std::string Drain(int descriptor) {
  std::string bytes;
  // What a pipe holds on Linux by default: one call empties a full one.
  std::array<char, 65536> block = {};
  for (ssize_t count = 1; count > 0 || (count < 0 && errno == EINTR);) {
    count = read(descriptor, block.data(), block.size());
    bytes.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  }
  close(descriptor);
  return bytes;
}

bool EndedWell(pid_t process) {
  int status = 0;
  pid_t ended = 0;
  do {
    ended = waitpid(process, &status, 0);
  } while (ended < 0 && errno == EINTR);
  return ended == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
#endif

}  // namespace

void RunGnuplot(const char* script) {
  // The shell finds gnuplot on the path. The status says nothing that the caller could use: gnuplot also ends with 0
  // where it could not write its picture.
  [[maybe_unused]] const int status = std::system((std::string(kGnuplot) + script).c_str());
}

std::optional<std::string> AskGnuplot([[maybe_unused]] const std::string& script) {
#ifdef _WIN32
  // There is no counterpart to posix_spawn that would need no file.
  return std::nullopt;
#else
  // From a file and not through a pipe: gnuplot may print before it has read all.
  const std::unique_ptr<std::FILE, TCloser> input(std::tmpfile());
  std::array<int, 2> output = {};
  // Back to the start, since the child gets the position along with the descriptor.
  if (!input || std::fwrite(script.data(), 1, script.size(), input.get()) != script.size() ||
      std::fflush(input.get()) != 0 || lseek(fileno(input.get()), 0, SEEK_SET) != 0 ||
      pipe2(output.data(), O_CLOEXEC) != 0) {
    return std::nullopt;
  }
  // posix_spawn and not fork: a program that holds gigabytes of features would have to copy its page tables first.
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // The copies that dup2() makes stay open in the new program; the ends of the pipe themselves are close-on-exec.
  posix_spawn_file_actions_adddup2(&actions, fileno(input.get()), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  std::string name = "gnuplot";
  // Ignores ~/.gnuplot and the like, which may change colors and terminals: a report must look the same for everybody.
  std::string defaults = "-d";
  const std::array<char*, 3> arguments = {name.data(), defaults.data(), nullptr};
  pid_t process = 0;
  const bool isStarted = posix_spawnp(&process, name.c_str(), &actions, nullptr, arguments.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  // Before reading: with our own copy of the writing end open, the pipe would never come to its end.
  close(output[1]);
  std::string printed = Drain(output[0]);
  // Waited for only after draining: gnuplot would block on a full pipe while we blocked on gnuplot.
  return isStarted && EndedWell(process) ? std::optional(std::move(printed)) : std::nullopt;
#endif
}

void Pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace base
