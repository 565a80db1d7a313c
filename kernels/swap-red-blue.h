// The step between pictures (red first) and bitmaps of image files (blue first).
#pragma once

#include <cstddef>

namespace kernels {

/// Copies pixels of three bytes and reverses the bytes of each: red, green, blue becomes blue, green, red and the other
/// way round.
///
/// Strides are in bytes and may be negative, for bitmaps that begin with their bottom row: the pointers are then to the
/// row that counts as the first. Sizes are in pixels. Bytes of a destination row beyond 3 * `width` stay as they are.
/// Nothing is read or written if a size is less than 1. Source and destination do not overlap.
void SwapRedBlue(const unsigned char* source, std::ptrdiff_t sourceStride, unsigned char* destination,
                 std::ptrdiff_t destinationStride, int width, int height);

}  // namespace kernels
