// Is loaded in front of a program and makes everything that dispatches by instruction set use one level, the one that
// SIMD_LEVEL names. A level that processor or build lack ends the program with the status by which a test is skipped.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include <hwy/targets.h>

namespace {

constexpr int kSkipped = 77;

struct TLevel {
  const char* name;
  std::int64_t target;
};

constexpr TLevel kLevels[] = {{"AVX3", HWY_AVX3},
                              {"AVX2", HWY_AVX2},
                              {"SSE4", HWY_SSE4},
                              {"SSSE3", HWY_SSSE3},
                              // Which of the two stands for "no vectors" depends on the compiler.
                              {"plain", HWY_EMU128 | HWY_SCALAR}};

[[gnu::constructor]] void ForceLevel() {
  const char* wanted = std::getenv("SIMD_LEVEL");
  for (const TLevel& level : kLevels) {
    if (wanted != nullptr && std::strcmp(wanted, level.name) == 0) {
      const std::int64_t target = hwy::SupportedTargets() & HWY_TARGETS & level.target;
      if (target == 0) {
        _exit(kSkipped);
      }
      hwy::SetSupportedTargetsForTest(target);
      return;
    }
  }
  std::fprintf(stderr, "SIMD_LEVEL names no level\n");
  std::abort();
}

}  // namespace
