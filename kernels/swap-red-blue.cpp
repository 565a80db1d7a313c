#include "kernels/swap-red-blue.h"

#include <cstddef>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/swap-red-blue.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Five pixels fill 15 of 16 bytes. The sixteenth byte is stored as it comes, and the next step or the loop over single
// pixels puts it right.
constexpr size_t kStep = 15;
alignas(16) constexpr uint8_t kReversed[16] = {2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15};

/// Swaps as much of a row as whole vectors hold and returns the number of bytes.
size_t SwapVectors(const uint8_t* HWY_RESTRICT source, uint8_t* HWY_RESTRICT destination, size_t bytes) {
  const hn::FixedTag<uint8_t, 16> d;
  const auto reversed = Load(d, kReversed);

  size_t i = 0;
  // Rows of one picture lie next to each other, so that a store beyond the end of one would write into the next: the
  // bound keeps whole vectors inside.
  for (; i + 16 <= bytes; i += kStep) {
    StoreU(TableLookupBytes(LoadU(d, source + i), reversed), d, destination + i);
  }
  return i;
}

#else

/// Lanes of one element cannot be shuffled: without vectors the plain loop does it all.
size_t SwapVectors(const uint8_t*, uint8_t*, size_t) {
  return 0;
}

#endif

void SwapRow(const uint8_t* HWY_RESTRICT source, uint8_t* HWY_RESTRICT destination, size_t bytes) {
  for (size_t i = SwapVectors(source, destination, bytes); i < bytes; i += 3) {
    destination[i] = source[i + 2];
    destination[i + 1] = source[i + 1];
    destination[i + 2] = source[i];
  }
}

}  // namespace

void SwapRedBlue(const uint8_t* source, ptrdiff_t sourceStride, uint8_t* destination, ptrdiff_t destinationStride,
                 int width, int height) {
  for (ptrdiff_t y = 0; y < height; ++y) {
    SwapRow(source + y * sourceStride, destination + y * destinationStride, 3 * static_cast<size_t>(width));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(SwapRedBlue);

void SwapRedBlue(const unsigned char* source, std::ptrdiff_t sourceStride, unsigned char* destination,
                 std::ptrdiff_t destinationStride, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(SwapRedBlue)(source, sourceStride, destination, destinationStride, width, height);
}

}  // namespace kernels
#endif
