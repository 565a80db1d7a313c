#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include <boost/function.hpp>

/// Code of strangers that may crash, hang or touch what is not its own: it runs in a process apart, and on memory that
/// tells. There is none of it on Windows.
namespace base {

/// True if this platform has what the others of this file promise; they must not be used elsewhere.
bool CanRunTrials();

enum class TTrialEnd {
  kReturned,
  /// It crashed, ended the program or threw; `how` tells which.
  kCrashed,
  /// It touched memory beside a block; `how` tells which, and on which side.
  kTrespassed,
  /// It was silent for too long and was ended.
  kHung,
  /// The platform refused a process.
  kNotStarted,
};

struct TTrialOutcome {
  TTrialEnd end;
  std::string how;
};

/// Takes one line of text, without its line end.
using TTell = boost::function<void(const std::string&)>;

/// Runs `trial` in a copy of this process; what it prints goes to standard error. The lines that it tells reach `hear`
/// here, in their order, and each one restarts its time. Must not be called with more than one thread alive.
TTrialOutcome RunTrial(const boost::function<void(const TTell&)>& trial, const TTell& hear, int patienceMilliseconds);

/// Bytes that end, or begin, exactly where 16 MiB of memory begin, or end, that nobody may touch. On the other side
/// there may be up to a page of slack before such memory.
class TGuardedBlock {
 public:
  enum class TFlush { kAtEnd, kAtStart };

  /// `name` appears in TTrialOutcome::how and must outlive the block. Check HasMemory() before use.
  TGuardedBlock(std::size_t size, TFlush flush, const char* name);
  ~TGuardedBlock();
  TGuardedBlock(const TGuardedBlock&) = delete;
  TGuardedBlock& operator=(const TGuardedBlock&) = delete;

  bool HasMemory() const { return mapping != nullptr; }
  unsigned char* GetBytes() const { return bytes; }

  /// From now on whoever writes to the bytes trespasses.
  void MakeReadOnly();

 private:
  friend const char* WhereTrespassed(const void* address, const char*& name);

  unsigned char* mapping = nullptr;
  std::size_t mappingSize = 0;
  unsigned char* pages = nullptr;
  std::size_t pagesSize = 0;
  unsigned char* bytes = nullptr;
  std::size_t size;
  const char* name;
};

/// What the process holds of memory: what its allocator gave away, and all that it mapped.
struct TMemoryInUse {
  /// Nothing where the allocator does not tell.
  std::optional<std::size_t> allocated;
  /// Nothing where the platform does not tell, or a sanitizer's own memory would drown the rest.
  std::optional<std::size_t> mapped;
};
TMemoryInUse MemoryInUse();

}  // namespace base
