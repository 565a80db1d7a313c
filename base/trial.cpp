#include "base/trial.h"

#ifdef _WIN32

namespace base {

bool CanRunTrials() {
  return false;
}

TTrialOutcome RunTrial(const boost::function<void(const TTell&)>&, const TTell&, int) {
  return {TTrialEnd::kNotStarted, {}};
}

TGuardedBlock::TGuardedBlock(std::size_t theSize, TFlush, const char* theName) : size(theSize), name(theName) {}
TGuardedBlock::~TGuardedBlock() = default;
void TGuardedBlock::MakeReadOnly() {}

TMemoryInUse MemoryInUse() {
  return {};
}

}  // namespace base

#else

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#ifdef __SANITIZE_ADDRESS__
// Not every compiler brings sanitizer/allocator_interface.h with it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

#include "base/child-process.h"
#include "base/memory.h"

namespace base {

namespace {

// Control characters, which no line of a trial begins with: its lines are words and numbers.
// The first byte of a line that the machinery tells, and not the trial.
constexpr char kReturnedMark = '\x01';
constexpr char kThrewMark = '\x02';
constexpr char kTrespassedMark = '\x03';

// Larger than the rows of any picture that is tried, so that an error of a whole row, the commonest one, still falls
// into it. It costs address space only: the pages are never touched.
constexpr std::size_t kGuardSize = std::size_t{16} << 20;

// Both serve the handler of signals, which has nothing but globals.
std::array<const TGuardedBlock*, 8> blocks = {};
int toParent = -1;

void WriteAll(const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(toParent, bytes, count);
    if (written < 0 && errno != EINTR) {
      _exit(EXIT_FAILURE);
    }
    bytes += std::max<ssize_t>(written, 0);
    count -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
  }
}

void WriteText(const char* text) {
  WriteAll(text, std::strlen(text));
}

void TellLine(std::string line) {
  // A line feed in a text of the plug-in would be taken for the end of the line.
  std::replace(line.begin(), line.end(), '\n', ' ');
  line += '\n';
  WriteAll(line.data(), line.size());
}

}  // namespace

/// On which side of which block the address lies; null if it lies beside none. Safe in a handler of signals.
const char* WhereTrespassed(const void* address, const char*& name) {
  const auto* place = static_cast<const unsigned char*>(address);
  for (const TGuardedBlock* block : blocks) {
    if (block == nullptr || place < block->mapping || place >= block->mapping + block->mappingSize) {
      continue;
    }
    name = block->name;
    if (place < block->bytes) {
      return "before the first byte of ";
    }
    return place >= block->bytes + block->size ? "behind the last byte of " : "writes to ";
  }
  return nullptr;
}

namespace {

extern "C" void OnFault(int signal, siginfo_t* information, void* /*context*/) {
  const char* name = nullptr;
  // Only what POSIX lists as async-signal-safe: the fault may have come from within malloc() or printf(), whose locks
  // are then held.
  if (const char* where = WhereTrespassed(information->si_addr, name)) {
    WriteAll(&kTrespassedMark, 1);
    WriteText(where);
    WriteText(name);
    WriteText("\n");
    _exit(EXIT_FAILURE);
  }
  std::signal(signal, SIG_DFL);
  // Ends the process by the signal itself, which the parent reads from waitpid().
  raise(signal);
}

void CatchFaults() {
  // A stack of its own, for the fault of a stack that is full. 64 KiB hold the registers of any processor in use, whose
  // vector units make the frame of a handler large; SIGSTKSZ is not a constant in glibc.
  static std::array<char, 65536> stack;
  stack_t alternative = {};
  alternative.ss_sp = stack.data();
  alternative.ss_size = stack.size();
  sigaltstack(&alternative, nullptr);
  struct sigaction action = {};
  action.sa_sigaction = OnFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
}

[[noreturn]] void BeTrial(const boost::function<void(const TTell&)>& trial) {
  // What a plug-in prints must not mix with the findings on standard output.
  dup2(STDERR_FILENO, STDOUT_FILENO);
  CatchFaults();
  try {
    trial(TellLine);
    TellLine(std::string(1, kReturnedMark));
  } catch (const std::exception& failure) {
    TellLine(kThrewMark + std::string("it throws an exception: ") + failure.what());
  } catch (...) {
    TellLine(kThrewMark + std::string("it throws an exception"));
  }
  // Not exit(): the destructors and buffers belong to the parent, and would be run and written twice.
  _exit(EXIT_SUCCESS);
}

/// Reads what the trial tells until it closes the pipe. False if it was silent for too long.
bool Listen(int pipe, const TTell& hear, int patience, TTrialOutcome& outcome) {
  using TClock = std::chrono::steady_clock;
  auto deadline = TClock::now() + std::chrono::milliseconds(patience);
  std::string pending;
  for (;;) {
    // Rounded up, since poll() with 0 would spin through the last millisecond.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - TClock::now()).count();
    pollfd wait = {pipe, POLLIN, 0};
    const int ready = left > 0 ? poll(&wait, 1, static_cast<int>(left)) : 0;
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    if (ready <= 0) {
      return false;
    }
    std::array<char, 4096> block;
    const ssize_t count = read(pipe, block.data(), block.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    // The system closes the pipe with the process, however that ends. A line that was cut off then stays in `pending`
    // and is not heard: half a finding would be a wrong one.
    if (count <= 0) {
      return true;
    }
    deadline = TClock::now() + std::chrono::milliseconds(patience);
    pending.append(block.data(), static_cast<std::size_t>(count));
    for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
      const std::string line = pending.substr(0, end);
      pending.erase(0, end + 1);
      switch (line.empty() ? ' ' : line.front()) {
        case kReturnedMark:
          outcome = {TTrialEnd::kReturned, {}};
          break;
        case kThrewMark:
          outcome = {TTrialEnd::kCrashed, line.substr(1)};
          break;
        case kTrespassedMark:
          outcome = {TTrialEnd::kTrespassed, line.substr(1)};
          break;
        default:
          hear(line);
      }
    }
  }
}

std::string HowItEnded(int status) {
  if (WIFSIGNALED(status)) {
    return strsignal(WTERMSIG(status));
  }
  return "it ends the program with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

bool CanRunTrials() {
  return true;
}

TTrialOutcome RunTrial(const boost::function<void(const TTell&)>& trial, const TTell& hear, int patienceMilliseconds) {
  // What is still in the buffers would be written twice.
  std::fflush(nullptr);
  const auto child = StartChild([&](int ownEnd) {
    toParent = ownEnd;
    BeTrial(trial);
  });
  if (!child) {
    return {TTrialEnd::kNotStarted, std::strerror(errno)};
  }
  TTrialOutcome outcome = {TTrialEnd::kCrashed, {}};
  if (!Listen(child->fromChild, hear, patienceMilliseconds, outcome)) {
    outcome = {TTrialEnd::kHung, {}};
  }
  // It may also have closed the pipe and gone on.
  const int status = EndChild(*child);
  if (outcome.end == TTrialEnd::kCrashed && outcome.how.empty()) {
    outcome.how = HowItEnded(status);
  }
  return outcome;
}

TGuardedBlock::TGuardedBlock(std::size_t theSize, TFlush flush, const char* theName) : size(theSize), name(theName) {
  const auto slot = std::find(blocks.begin(), blocks.end(), nullptr);
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  pagesSize = (theSize + page - 1) / page * page;
  mappingSize = pagesSize + 2 * kGuardSize;
  void* const memory =
      slot == blocks.end() ? MAP_FAILED : mmap(nullptr, mappingSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    return;
  }
  mapping = static_cast<unsigned char*>(memory);
  pages = mapping + kGuardSize;
  // The processor protects whole pages only, so that just one end of the block can touch the guard. Each picture is
  // tried with either end.
  bytes = flush == TFlush::kAtEnd ? pages + pagesSize - theSize : pages;
  if (pagesSize > 0 && mprotect(pages, pagesSize, PROT_READ | PROT_WRITE) != 0) {
    munmap(mapping, mappingSize);
    mapping = nullptr;
    return;
  }
  *slot = this;
}

TGuardedBlock::~TGuardedBlock() {
  if (mapping != nullptr) {
    std::replace(blocks.begin(), blocks.end(), static_cast<const TGuardedBlock*>(this),
                 static_cast<const TGuardedBlock*>(nullptr));
    munmap(mapping, mappingSize);
  }
}

void TGuardedBlock::MakeReadOnly() {
  if (pagesSize > 0) {
    mprotect(pages, pagesSize, PROT_READ);
  }
}

TMemoryInUse MemoryInUse() {
#ifdef __SANITIZE_ADDRESS__
  return {__sanitizer_get_current_allocated_bytes(), std::nullopt};
#else
  TMemoryInUse memory;
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
  // Not mallinfo(), whose numbers are ints and wrap around beyond 2 GiB.
  const auto heap = mallinfo2();
  // Blocks in use in the arenas, and those that are mappings of their own.
  memory.allocated = heap.uordblks + heap.hblkhd;
#endif
  memory.mapped = MappedMemory();
  return memory;
#endif
}

}  // namespace base

#endif
