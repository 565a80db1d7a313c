#pragma once

namespace base {

/// Has gnuplot run a script of the working directory, and waits until it has ended. Whether gnuplot could be started,
/// or drew anything, the caller finds out from what it left behind.
void RunGnuplot(const char* script);

/// Waits, without doing anything else.
void Pause(int milliseconds);

}  // namespace base
