// From the start of a process to its painted window and its end: processor time, time by the clock and peak memory.

#include <chrono>
#include <cstdio>
#include <string>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/bench-data.h"

namespace {

struct TStart {
  bool succeeds = false;
  double processorTime = 0.0;
  double wallTime = 0.0;
  double peakMemory = 0.0;
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

TStart RunOnce(std::string program, std::string argument) {
  TStart start;
  int ends[2];
  if (pipe(ends) != 0) {
    return start;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  char* arguments[] = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  const auto begin = std::chrono::steady_clock::now();
  const bool isStarted = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::FILE* output = fdopen(ends[0], "r");
  long kibibytes = 0;
  int status = -1;
  rusage usage = {};
  if (isStarted) {
    const bool isWritten = std::fscanf(output, "%ld", &kibibytes) == 1;
    start.succeeds = wait4(child, &status, 0, &usage) == child && status == 0 && isWritten;
  }
  start.wallTime = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  std::fclose(output);
  start.processorTime = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  start.peakMemory = static_cast<double>(kibibytes) * 1024;
  return start;
}

void BM_Start(benchmark::State& state, const char* program, const char* argument) {
  // The engine writes its history there.
  EnterWorkDirectory();
  TStart sum;
  for (auto _ : state) {
    const TStart start = RunOnce(program, argument);
    if (!start.succeeds) {
      state.SkipWithError("The window did not come up.");
      return;
    }
    state.SetIterationTime(start.wallTime);
    sum.processorTime += start.processorTime;
    sum.wallTime += start.wallTime;
    sum.peakMemory += start.peakMemory;
  }
  state.counters["processorTime"] = benchmark::Counter(sum.processorTime, benchmark::Counter::kAvgIterations);
  state.counters["wallTime"] = benchmark::Counter(sum.wallTime, benchmark::Counter::kAvgIterations);
  state.counters["peakMemory"] = benchmark::Counter(sum.peakMemory, benchmark::Counter::kAvgIterations);
}

/// Each start beside one of the bare window, right after it, so that both meet the same machine.
void BM_StartAboveToolkit(benchmark::State& state) {
  EnterWorkDirectory();
  double above = 0.0;
  for (auto _ : state) {
    const TStart workbench = RunOnce(START_WINDOW, "workbench");
    const TStart toolkit = RunOnce(START_TOOLKIT, "bare");
    if (!workbench.succeeds || !toolkit.succeeds) {
      state.SkipWithError("The window did not come up.");
      return;
    }
    state.SetIterationTime(workbench.wallTime + toolkit.wallTime);
    above += workbench.processorTime - toolkit.processorTime;
  }
  state.counters["above"] = benchmark::Counter(above, benchmark::Counter::kAvgIterations);
}

BENCHMARK(BM_StartAboveToolkit)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Start, workbench, START_WINDOW, "workbench")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Start, bare, START_WINDOW, "bare")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Start, toolkit, START_TOOLKIT, "bare")->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
