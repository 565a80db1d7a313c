// The gray plane of a color picture.
#pragma once

namespace kernels {

/// Writes the gray level of each pixel of `rgb` (bytes red, green, blue) to `gray` (one byte a pixel):
///
///   Y = (19595 R + 38470 G + 7471 B + 32768) >> 16
///
/// which are the luma weights 0.299, 0.587, 0.114 of ITU-R BT.601 in 16-bit fixed point. The weights sum to 65536, so
/// that a pixel with three equal bytes keeps them. The result is exact on every processor.
///
/// Strides are in bytes, sizes in pixels. Bytes of a row of `gray` beyond `width` stay as they are. Nothing is read or
/// written if a size is less than 1. Source and destination do not overlap.
void GrayPlane(const unsigned char* rgb, int rgbStride, unsigned char* gray, int grayStride, int width, int height);

}  // namespace kernels
