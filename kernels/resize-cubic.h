// Cubic resampling of 8-bit pictures.
#pragma once

namespace kernels {

/// Resample the whole source to the whole destination, three interleaved channels or one. Cubic convolution with
/// a = -1/2 (Catmull-Rom) along both axes; when an axis shrinks, the kernel is widened by the same factor, so that each
/// source pixel has its part in the result. At the edges the weights of the pixels inside the picture are scaled up to
/// sum to one. The arithmetic is in whole numbers and the result the same on every processor: weights of 14 fractional
/// bits, six fractional bits between the two passes, rounding and clamping to 0..255 at the end. An even picture stays
/// even, and a picture of the same size is a copy.
///
/// Strides are in bytes, sizes in pixels. Bytes of a destination row beyond its width stay as they are. Nothing is
/// written if any size is less than 1. Source and destination do not overlap.
void ResizeCubicRgb(const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                    unsigned char* destination, int destinationStride, int width, int height);
void ResizeCubicGray(const unsigned char* source, int sourceStride, int sourceWidth, int sourceHeight,
                     unsigned char* destination, int destinationStride, int width, int height);

}  // namespace kernels
