// Runs all benchmarks and prints one table of ratios and one of growth. Flags of the benchmark library override what
// is set here.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <QApplication>
#include <benchmark/benchmark.h>
#include <hwy/targets.h>
#include <sched.h>

#include "base/memory.h"
#include "benchmarks/report.h"

namespace {

/// The last processor that is allowed, since the first tends to serve the devices. Children inherit it.
void PinToOneProcessor() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) {
    return;
  }
  for (std::size_t i = CPU_SETSIZE; i-- > 0;) {
    if (CPU_ISSET(i, &allowed)) {
      CPU_ZERO(&allowed);
      CPU_SET(i, &allowed);
      sched_setaffinity(0, sizeof allowed, &allowed);
      return;
    }
  }
}

std::string ProcessorModel() {
  std::ifstream lines("/proc/cpuinfo");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("model name")) {
      return line.substr(line.find(':') + 2);
    }
  }
  return "unknown";
}

void PrintHeading() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  char date[16] = "";
  std::strftime(date, sizeof date, "%F", std::localtime(&now));
  // Of the instruction sets that were compiled, the best that the processor has is the lowest bit.
  const std::int64_t targets = hwy::SupportedTargets() & HWY_TARGETS;
  std::printf("%s; %s; best SIMD level: %s; compiler: %s\n\n", date, ProcessorModel().c_str(),
              hwy::TargetName(targets & -targets), __VERSION__);
}

}  // namespace

int main(int argc, char** argv) {
  PinToOneProcessor();
  if (std::filesystem::exists("/dev/shm")) {
    setenv("TMPDIR", "/dev/shm", 0);
  }
  // As the programs do: commands that let the window draw itself have to pay for it.
  base::KeepFreedMemory();
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // Where nobody is logged in, every window warns of a missing directory.
  qputenv("QT_LOGGING_RULES", "default.warning=false");
  const QApplication application(argc, argv);
  std::vector<std::string> defaults = {"--benchmark_repetitions=5", "--benchmark_min_time=0.2",
                                       "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> arguments = {argv[0]};
  for (std::string& flag : defaults) {
    arguments.push_back(flag.data());
  }
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
    return 1;
  }
  TReport report;
  if (benchmark::RunSpecifiedBenchmarks(&report) > 0) {
    PrintHeading();
    report.PrintTables();
  }
}
