#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The loops over rows of canny.cpp, compiled for each level of vectors and chosen at run time. Each element is
/// computed by itself and without fused products, so that all levels give the same bytes.
namespace rows {

constexpr int kSmoothRadius = 6;
/// From the middle outwards.
using TSmoothWeights = std::array<float, kSmoothRadius + 1>;
/// Where the values for the taps of element 0 stand, from the first tap to the last.
using TSmoothTaps = std::array<const float*, 2 * kSmoothRadius + 1>;

/// The weighted sums of 13 values each.
void Smooth(const TSmoothTaps& taps, const TSmoothWeights& weights, float* result, int count);

/// Magnitudes of gradients and their nearest directions: 0 sideways, 1 upwards, 2 and 3 along the falling and the
/// rising diagonal. Raises the elements of `greatest` to the magnitudes.
void Polar(const float* gx, const float* gy, float* magnitudes, std::int32_t* directions, float* greatest, int count);

/// 1 where a magnitude is greater than the one before it in its direction and not less than the one after, else 0. The
/// rows go on for one element on both sides.
void Maxima(const float* above, const float* row, const float* below, const std::int32_t* directions,
            unsigned char* flags, int count);

/// floor(values x scale).
void Bins(const float* values, float scale, std::int32_t* bins, int count);

/// Where a flag is 1: 2 above the high threshold, 1 above the low one, else 0.
void Grade(const float* magnitudes, float low, float high, unsigned char* flags, std::size_t count);

}  // namespace rows
