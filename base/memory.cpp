#include "base/memory.h"

// For __GLIBC__.
#include <cstdlib>

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

}  // namespace base
