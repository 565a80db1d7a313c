#pragma once

#include <cstdint>

/// The loops over rows of tamura.cpp, compiled for each level of vectors and chosen at run time. Each element is
/// computed by itself and without fused products, so that all levels give the same bytes.
namespace rows {

/// Means of whole windows, from the sums above and left of the corners: `lower` and `upper` stand at the left corners
/// of element 0, `share` is 1 / the window's pixels, a power of two.
void WindowMeans(const std::uint32_t* lower, const std::uint32_t* upper, int side, float share, float* means,
                 int count);

/// Room for a tag in the last bits of a number.
constexpr std::int32_t kTagMask = 7;
/// Raises each key to the difference of two means, if that is more: the bits of the number, which are in the order of
/// the numbers, but for the last three, which are the tag.
void KeepGreatest(const float* ahead, const float* behind, std::int32_t tag, std::int32_t* keys, int count);

/// 64 x direction + 8 x coarseness + contrast. The coarseness is given by a key, with kMostCoarse - k as its tag, and
/// falls into the bin floor(8 k / 5), 7 at most.
constexpr std::int32_t kMostCoarse = 5;
void JointBins(const std::int16_t* directions, const std::int32_t* keys, const unsigned char* contrasts,
               std::uint16_t* bins, int count);

/// Sums of the first four powers of gray level - 128. The first three may wrap around.
struct TPowerRows {
  std::uint32_t* first;
  std::uint32_t* second;
  std::uint32_t* third;
  std::int64_t* fourth;
};
/// Adds the powers of a row, with sign 1 or -1.
void AddPowers(const unsigned char* pixels, int sign, const TPowerRows& sums, int count);

/// n^2 times the variance of the n = rows x side pixels of windows, from the running sums in front of their columns.
void Variances(const std::uint32_t* first, const std::uint32_t* second, int rows, int side, std::int32_t* variances,
               int count);

/// floor(contrast / 16) from n^2 times the variance, above 0, and n^4 times the fourth central moment of windows of n
/// pixels. The contrast is the variance / the fourth root of the moment.
void ContrastBins(const double* variances, const double* moments, double n, unsigned char* bins, int count);

/// floor(8 / pi x (atan(vertical / horizontal) + pi / 2)) of Sobel's differences, 0 where the horizontal one is 0. The
/// rows, smoothed and differentiated upwards, go on for one element on both sides.
void Directions(const std::int16_t* smooth, const std::int16_t* change, std::int16_t* bins, int count);

}  // namespace rows
