#include "plugins/canny-rows.h"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "plugins/canny-rows.cpp"
#include <hwy/foreach_target.h>  // this file again, once for each level
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace rows::HWY_NAMESPACE {

// Loops that compilers turn into vectors of the level that they are compiled for.

void SmoothRow(const TSmoothTaps& taps, const TSmoothWeights& weights, float* HWY_RESTRICT result, int count) {
  const TSmoothWeights w = weights;
  const TSmoothTaps from = taps;
  for (int x = 0; x < count; ++x) {
    // The mirrored taps are added before they are weighed, from the middle outwards: half of the products, and one
    // fixed order of the sums.
    result[x] = w[0] * from[6][x] + w[1] * (from[5][x] + from[7][x]) + w[2] * (from[4][x] + from[8][x]) +
                w[3] * (from[3][x] + from[9][x]) + w[4] * (from[2][x] + from[10][x]) +
                w[5] * (from[1][x] + from[11][x]) + w[6] * (from[0][x] + from[12][x]);
  }
}

void PolarRow(const float* HWY_RESTRICT gx, const float* HWY_RESTRICT gy, float* HWY_RESTRICT magnitudes,
              std::int32_t* HWY_RESTRICT directions, float* HWY_RESTRICT greatest, int count) {
  constexpr float kShallow = 0.41421356f;  // tan(pi / 8)
  constexpr float kSteep = 2.41421356f;    // tan(3 pi / 8)
  for (int x = 0; x < count; ++x) {
    const float magnitude = std::sqrt(gx[x] * gx[x] + gy[x] * gy[x]);
    magnitudes[x] = magnitude;
    // Column by column, so that the loop has no dependence from pixel to pixel.
    greatest[x] = magnitude > greatest[x] ? magnitude : greatest[x];
    const float width = std::fabs(gx[x]);
    const float height = std::fabs(gy[x]);
    // Both differences of one sign: the gradient points to the lower right or the upper left, as y grows downwards.
    const int diagonal = gx[x] * gy[x] > 0.0f ? 2 : 3;
    // Slopes are compared by products. No quotient, no branch, and no trouble where a difference is 0.
    const int steepOrDiagonal = height > kSteep * width ? 1 : diagonal;
    directions[x] = height < kShallow * width ? 0 : steepOrDiagonal;
  }
}

void MaximaRow(const float* HWY_RESTRICT above, const float* HWY_RESTRICT row, const float* HWY_RESTRICT below,
               const std::int32_t* HWY_RESTRICT directions, unsigned char* HWY_RESTRICT flags, int count) {
  for (int x = 0; x < count; ++x) {
    const int direction = directions[x];
    // All four candidates are loaded and one is chosen: loads in a branch could not be done for several pixels at once.
    const float diagonalBefore = direction == 2 ? above[x - 1] : above[x + 1];
    const float diagonalAfter = direction == 2 ? below[x + 1] : below[x - 1];
    const float straightBefore = direction == 0 ? row[x - 1] : above[x];
    const float straightAfter = direction == 0 ? row[x + 1] : below[x];
    const float before = direction < 2 ? straightBefore : diagonalBefore;
    const float after = direction < 2 ? straightAfter : diagonalAfter;
    // Strictly on one side only: of a ridge two pixels wide one remains, and not both or none.
    const int isMore = row[x] > before ? 1 : 0;
    flags[x] = static_cast<unsigned char>(row[x] >= after ? isMore : 0);
  }
}

void BinRow(const float* HWY_RESTRICT values, float scale, std::int32_t* HWY_RESTRICT bins, int count) {
  for (int x = 0; x < count; ++x) {
    // Cut toward zero, which is floor for numbers of 0 and more.
    bins[x] = static_cast<std::int32_t>(values[x] * scale);
  }
}

void GradeAll(const float* HWY_RESTRICT magnitudes, float low, float high, unsigned char* HWY_RESTRICT flags,
              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const int grade = magnitudes[i] > high ? 2 : 1;
    const int flag = magnitudes[i] > low ? grade : 0;
    flags[i] = static_cast<unsigned char>(flags[i] != 0 ? flag : 0);
  }
}

}  // namespace rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rows {

HWY_EXPORT(SmoothRow);
HWY_EXPORT(PolarRow);
HWY_EXPORT(MaximaRow);
HWY_EXPORT(BinRow);
HWY_EXPORT(GradeAll);

void Smooth(const TSmoothTaps& taps, const TSmoothWeights& weights, float* result, int count) {
  HWY_DYNAMIC_DISPATCH(SmoothRow)(taps, weights, result, count);
}

void Polar(const float* gx, const float* gy, float* magnitudes, std::int32_t* directions, float* greatest, int count) {
  HWY_DYNAMIC_DISPATCH(PolarRow)(gx, gy, magnitudes, directions, greatest, count);
}

void Maxima(const float* above, const float* row, const float* below, const std::int32_t* directions,
            unsigned char* flags, int count) {
  HWY_DYNAMIC_DISPATCH(MaximaRow)(above, row, below, directions, flags, count);
}

void Bins(const float* values, float scale, std::int32_t* bins, int count) {
  HWY_DYNAMIC_DISPATCH(BinRow)(values, scale, bins, count);
}

void Grade(const float* magnitudes, float low, float high, unsigned char* flags, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(GradeAll)(magnitudes, low, high, flags, count);
}

}  // namespace rows
#endif
