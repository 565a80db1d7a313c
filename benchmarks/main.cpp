#include <benchmark/benchmark.h>

#include "base/memory.h"

int main(int argc, char** argv) {
  // As the programs do.
  base::KeepFreedMemory();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
}
