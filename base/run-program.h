#pragma once

namespace base {

/// Has gnuplot run a script of the working directory, and waits until it has ended. Whether it could is not told.
void RunGnuplot(const char* script);

/// Lets the time pass.
void Pause(int milliseconds);

}  // namespace base
