#include "base/run-program.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

namespace base {

namespace {

#ifdef _WIN32
constexpr const char* kGnuplot = "gnuplot.exe ";
#else
constexpr const char* kGnuplot = "gnuplot ";
#endif

}  // namespace

void RunGnuplot(const char* script) {
  [[maybe_unused]] const int status = std::system((std::string(kGnuplot) + script).c_str());
}

void Pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace base
