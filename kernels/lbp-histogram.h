// Local binary patterns, counted.
#pragma once

#include <cstdint>

namespace kernels {

/// Counts the patterns of all interior pixels of a gray picture into 256 bins. The pattern of a pixel has one bit for
/// each of its eight neighbors, set when the neighbor is strictly greater than the pixel. The bits follow the reading
/// order of the 3 by 3 block:
///
///     1   2   4
///     8   .  16
///    32  64 128
///
/// `counts` is overwritten. The border of one pixel serves as neighbor only, so that a picture with a size less than 3
/// counts nothing and leaves 256 zeros. `stride` is in bytes, sizes are in pixels.
void LbpHistogram(const unsigned char* gray, int stride, int width, int height, std::uint64_t counts[256]);

}  // namespace kernels
