#pragma once

// For the two kinds of work that run in a process apart, trial.cpp and guarded-run.cpp; on Windows there is neither.
#ifndef _WIN32

#include <optional>

#include <boost/function.hpp>
#include <sys/types.h>

namespace base {

/// A copy of this process, and the end of the pipe from which its words are read.
struct TChildProcess {
  pid_t process;
  int fromChild;
};

/// Runs `work` in a copy of this process that ends when the work returns, and never later than this process. There it
/// runs without this process's handlers of signals, and a crash leaves no core file behind. `work` gets its end of the
/// pipe. Nothing, and errno, if the platform refuses. Of this process's threads only the caller's goes on in the copy.
std::optional<TChildProcess> StartChild(const boost::function<void(int toParent)>& work);

/// Ends the process if it has not ended by itself, and closes the pipe. The status is that of waitpid.
int EndChild(const TChildProcess& child);

}  // namespace base

#endif
