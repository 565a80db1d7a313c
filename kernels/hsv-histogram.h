// Quantised hue, saturation and value, counted.
#pragma once

#include <cstdint>

namespace kernels {

/// Counts the colors of all pixels (bytes red, green, blue) into 256 bins: 16 steps of hue times 4 of saturation times
/// 4 of value. All divisions cut towards zero:
///
///   v     = largest byte, delta = v - smallest byte
///   s     = delta * 255 / v
///   hue   = (0 + 60 (g - b) / delta) mod 360     where red is the largest
///           (120 + 60 (b - r) / delta) mod 360   where green is, on a tie green before red
///           (240 + 60 (r - g) / delta) mod 360   where blue is, on a tie blue before both
///   bin   = 16 * (hue * 255 / 360 / 16) + 4 * (s / 64) + v / 64
///
/// Gray pixels (delta = 0) have the bin v / 64. `counts` is overwritten; a picture with a size less than 1 leaves 256
/// zeros. `stride` is in bytes, sizes are in pixels.
void HsvHistogram(const unsigned char* rgb, int stride, int width, int height, std::uint64_t counts[256]);

}  // namespace kernels
