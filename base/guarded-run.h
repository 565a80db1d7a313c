#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

#include <boost/function.hpp>

/// Work on what a stranger made, by code that it may crash, drive into an endless loop or have take all memory: it runs
/// in a process apart, and costs no more than its answer.
namespace base {

/// True if this platform can do so.
bool CanRunGuarded();

struct TGuardLimits {
  int processorSeconds;
  /// For work that waits and does not work, such as on a disk that has gone. A process that has to share its processor
  /// needs far longer than its processor's time.
  int waitedSeconds;
  /// Bytes beyond what this process has in use. Not held against work in a build with AddressSanitizer, whose own
  /// mappings are larger than any limit.
  std::size_t memory;
};

struct TAnswerCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using TAnswer = std::unique_ptr<std::FILE, TAnswerCloser>;

/// Runs `work` in a copy of this process and waits for it. What `work` writes to the file, in memory, is the answer,
/// which stands at its beginning. Null if `work` returned false, threw, crashed, exceeded a limit, or could not be
/// started. Nothing of the work reaches the terminal, and Ctrl-C leaves it alone. `work` must not touch what another
/// thread of this process may have been changing. What comes back is only as good as `work` is: whoever reads the
/// answer should doubt it.
TAnswer RunGuarded(const boost::function<bool(std::FILE* answer)>& work, const TGuardLimits& limits);

}  // namespace base
