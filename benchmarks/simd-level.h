#pragma once

#include <cstdint>

#include <benchmark/benchmark.h>
#include <hwy/targets.h>

/// Until its end, what dispatches by instruction set uses this one.
class TSimdLevelScope {
 public:
  explicit TSimdLevelScope(std::int64_t target) { hwy::SetSupportedTargetsForTest(target); }
  ~TSimdLevelScope() { hwy::SetSupportedTargetsForTest(0); }
  TSimdLevelScope(const TSimdLevelScope&) = delete;
  TSimdLevelScope& operator=(const TSimdLevelScope&) = delete;
};

/// The level without vectors, which leaves them to the compiler: for SSE2, since the build asks for nothing else.
/// Highway has no vectors of SSE2 itself, and which of the two stands in for them depends on the compiler.
constexpr std::int64_t kPlain = HWY_TARGETS & (HWY_EMU128 | HWY_SCALAR);

/// A benchmark with the kernels at one level; the peers always run at their own best.
template <auto TBenchmark, std::int64_t TTarget>
void AtLevel(benchmark::State& state) {
  if ((hwy::SupportedTargets() & HWY_TARGETS & TTarget) == 0) {
    state.SkipWithError("The processor or the build has no such level.");
    return;
  }
  const TSimdLevelScope scope(TTarget);
  TBenchmark(state);
}
