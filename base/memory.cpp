#include "base/memory.h"

// For __GLIBC__.
#include <cstdlib>

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
#include <fstream>
#include <unistd.h>
#endif
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace base {

void KeepFreedMemory() {
#ifdef __GLIBC__
  constexpr int kMostKept = 512 << 20;
  mallopt(M_MMAP_THRESHOLD, kMostKept);
  mallopt(M_TRIM_THRESHOLD, kMostKept);
#endif
}

std::optional<std::size_t> MappedMemory() {
#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
  // The first number is that of all mapped pages.
  std::ifstream statistics("/proc/self/statm");
  if (std::size_t count = 0; statistics >> count) {
    return count * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  }
#endif
  return std::nullopt;
}

}  // namespace base
