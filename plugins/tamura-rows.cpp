#include "plugins/tamura-rows.h"

#include <algorithm>
#include <bit>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "plugins/tamura-rows.cpp"
#include <hwy/foreach_target.h>  // this file again, once for each level
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace rows::HWY_NAMESPACE {

// Loops that compilers turn into vectors of the level that they are compiled for.

void MeanRow(const std::uint32_t* HWY_RESTRICT lower, const std::uint32_t* HWY_RESTRICT upper, int side, float share,
             float* HWY_RESTRICT means, int count) {
  for (int x = 0; x < count; ++x) {
    // A sum over a window from four corners of a summed-area table (F. Crow, SIGGRAPH 1984). Differences without a sign
    // wrap around and still come out right.
    means[x] =
        static_cast<float>(static_cast<std::int32_t>(lower[x + side] - upper[x + side] - (lower[x] - upper[x]))) *
        share;
  }
}

void KeepRow(const float* HWY_RESTRICT ahead, const float* HWY_RESTRICT behind, std::int32_t tag,
             std::int32_t* HWY_RESTRICT keys, int count) {
  for (int x = 0; x < count; ++x) {
    const auto bits = std::bit_cast<std::int32_t>(std::fabs(ahead[x] - behind[x]));
    // The bits of floats of 0 and more are in the order of the numbers, so that one comparison of whole numbers keeps
    // the greatest difference and where it came from.
    const std::int32_t key = (bits & ~kTagMask) | tag;
    keys[x] = key > keys[x] ? key : keys[x];
  }
}

void JointRow(const std::int16_t* HWY_RESTRICT directions, const std::int32_t* HWY_RESTRICT keys,
              const unsigned char* HWY_RESTRICT contrasts, std::uint16_t* HWY_RESTRICT bins, int count) {
  for (int x = 0; x < count; ++x) {
    // 0, 1, 3, 4, 6, 7.
    // floor(8 k / 5) for k from 0 to 5, by 13 / 8 in place of 8 / 5.
    const std::int32_t exact = 13 * (kMostCoarse - (keys[x] & kTagMask)) / 8;
    const std::int32_t coarseness = exact < 7 ? exact : 7;
    bins[x] = static_cast<std::uint16_t>(64 * directions[x] + 8 * coarseness + contrasts[x]);
  }
}

template <int kSign>
void PowerRow(const unsigned char* HWY_RESTRICT pixels, std::uint32_t* HWY_RESTRICT first,
              std::uint32_t* HWY_RESTRICT second, std::uint32_t* HWY_RESTRICT third, std::int64_t* HWY_RESTRICT fourth,
              int count) {
  for (int x = 0; x < count; ++x) {
    // Around the middle, so that 11 x 11 third powers fit into 32 bits.
    const auto value = static_cast<std::int16_t>(pixels[x] - 128);
    const auto square = static_cast<std::int16_t>(value * value);
    first[x] += static_cast<std::uint32_t>(kSign * value);
    second[x] += static_cast<std::uint32_t>(kSign * square);
    third[x] += static_cast<std::uint32_t>(kSign * (value * square));
    const std::int32_t power = kSign * (square * square);
    fourth[x] += power;
  }
}

void AddPowerRow(const unsigned char* pixels, int sign, const TPowerRows& sums, int count) {
  if (sign > 0) {
    PowerRow<1>(pixels, sums.first, sums.second, sums.third, sums.fourth, count);
  } else {
    PowerRow<-1>(pixels, sums.first, sums.second, sums.third, sums.fourth, count);
  }
}

void VarianceRow(const std::uint32_t* HWY_RESTRICT first, const std::uint32_t* HWY_RESTRICT second, int rows, int side,
                 std::int32_t* HWY_RESTRICT variances, int count) {
  for (int x = 0; x < count; ++x) {
    const auto sum = static_cast<std::int32_t>(first[x + side] - first[x]);
    const auto squares = static_cast<std::int32_t>(second[x + side] - second[x]);
    // n sum(x^2) - (sum x)^2 is n^2 times the variance, without a division.
    variances[x] = rows * side * squares - sum * sum;
  }
}

void ContrastRow(const double* HWY_RESTRICT variances, const double* HWY_RESTRICT moments, double n,
                 unsigned char* HWY_RESTRICT bins, int count) {
  for (int i = 0; i < count; ++i) {
    // The square of contrast / 16. The comparison with squares of whole numbers saves the fourth root, and is exact at
    // the borders of bins.
    const double squaredBin = variances[i] * variances[i] / (256.0 * n * n * std::sqrt(moments[i]));
    // No contrast exceeds 127.5.
    int bin = 0;
    for (int next = 1; next < 8; ++next) {
      bin += squaredBin >= next * next ? 1 : 0;
    }
    bins[i] = static_cast<unsigned char>(bin);
  }
}

void DirectionRow(const std::int16_t* HWY_RESTRICT smooth, const std::int16_t* HWY_RESTRICT change,
                  std::int16_t* HWY_RESTRICT bins, int count) {
  for (int x = 0; x < count; ++x) {
    const auto horizontal = static_cast<std::int16_t>(smooth[x + 1] - smooth[x - 1]);
    const auto vertical = static_cast<std::int16_t>(change[x - 1] + 2 * change[x] + change[x + 1]);
    const auto width = static_cast<std::int16_t>(horizontal < 0 ? -horizontal : horizontal);
    const auto rise = static_cast<std::int16_t>(horizontal < 0 ? -vertical : vertical);
    const auto height = static_cast<std::int16_t>(rise < 0 ? -rise : rise);
    const std::int16_t isUp = rise >= 0 ? 1 : 0;
    // Only the slopes 0 and 1 can fall on the border of a bin. floor(tan(pi / 8) x width), for the 1020 widths that
    // there are; tan(3 pi / 8) is greater by 2.
    const auto shallow =
        static_cast<std::int16_t>((static_cast<std::uint32_t>(static_cast<std::uint16_t>(width)) * 27146u) >> 16);
    const auto steps = static_cast<std::int16_t>((height > shallow ? 1 : 0) + (height > width - isUp ? 1 : 0) +
                                                 (height > shallow + 2 * width ? 1 : 0));
    const auto bin = static_cast<std::int16_t>(isUp != 0 ? 4 + steps : 3 - steps);
    bins[x] = width == 0 ? std::int16_t{0} : bin;
  }
}

}  // namespace rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rows {

HWY_EXPORT(MeanRow);
HWY_EXPORT(KeepRow);
HWY_EXPORT(JointRow);
HWY_EXPORT(AddPowerRow);
HWY_EXPORT(VarianceRow);
HWY_EXPORT(ContrastRow);
HWY_EXPORT(DirectionRow);

void WindowMeans(const std::uint32_t* lower, const std::uint32_t* upper, int side, float share, float* means,
                 int count) {
  HWY_DYNAMIC_DISPATCH(MeanRow)(lower, upper, side, share, means, count);
}

void KeepGreatest(const float* ahead, const float* behind, std::int32_t tag, std::int32_t* keys, int count) {
  HWY_DYNAMIC_DISPATCH(KeepRow)(ahead, behind, tag, keys, count);
}

void JointBins(const std::int16_t* directions, const std::int32_t* keys, const unsigned char* contrasts,
               std::uint16_t* bins, int count) {
  HWY_DYNAMIC_DISPATCH(JointRow)(directions, keys, contrasts, bins, count);
}

void AddPowers(const unsigned char* pixels, int sign, const TPowerRows& sums, int count) {
  HWY_DYNAMIC_DISPATCH(AddPowerRow)(pixels, sign, sums, count);
}

void Variances(const std::uint32_t* first, const std::uint32_t* second, int rows, int side, std::int32_t* variances,
               int count) {
  HWY_DYNAMIC_DISPATCH(VarianceRow)(first, second, rows, side, variances, count);
}

void ContrastBins(const double* variances, const double* moments, double n, unsigned char* bins, int count) {
  HWY_DYNAMIC_DISPATCH(ContrastRow)(variances, moments, n, bins, count);
}

void Directions(const std::int16_t* smooth, const std::int16_t* change, std::int16_t* bins, int count) {
  HWY_DYNAMIC_DISPATCH(DirectionRow)(smooth, change, bins, count);
}

}  // namespace rows
#endif
