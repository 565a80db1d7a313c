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
  // By default every block above 128 KiB (rising to 32 MiB as they are freed) is a mapping of its own, which goes back
  // to the system with free() and comes back as pages that the kernel must zero first. Setting either value also
  // switches that adaptation off.
  mallopt(M_MMAP_THRESHOLD, kMostKept);
  mallopt(M_TRIM_THRESHOLD, kMostKept);
#endif
}

void ReturnFreedMemory() {
#ifdef __GLIBC__
  malloc_trim(0);
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
