#include <cstdint>

#include <QApplication>
#include <benchmark/benchmark.h>
#include <hwy/highway.h>

#include "base/memory.h"

int main(int argc, char** argv) {
  // As the programs do: commands that let the window draw itself have to pay for it.
  base::KeepFreedMemory();
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  // Of the instruction sets that were compiled, the best that the processor has is the lowest bit.
  const std::int64_t targets = hwy::SupportedTargets() & HWY_TARGETS;
  benchmark::AddCustomContext("simd", hwy::TargetName(targets & -targets));
  benchmark::RunSpecifiedBenchmarks();
}
