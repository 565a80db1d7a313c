#pragma once

#include <optional>
#include <string>

namespace base {

/// Has gnuplot run a script of the working directory, and waits until it has ended. Whether it could is not told.
void RunGnuplot(const char* script);

/// What gnuplot prints to standard output when it reads the script from standard input; no file is made and no settings
/// of the user are read. Nothing if there is no gnuplot, or if it ends with an error.
std::optional<std::string> AskGnuplot(const std::string& script);

/// Lets the time pass.
void Pause(int milliseconds);

}  // namespace base
