#include "plugins/moments-rows.h"

#include <bit>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "plugins/moments-rows.cpp"
#include <hwy/foreach_target.h>  // this file again, once for each level
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace rows::HWY_NAMESPACE {

// Loops that compilers turn into vectors of the level that they are compiled for.

/// A constant as its source writes it, in single precision.
constexpr float Single(double value) {
  return static_cast<float>(value);
}

/// The cube root, or the line that continues it to 0: a guess from the exponent, then two steps of Halley's method.
HWY_INLINE float LabCurve(float t) {
  // The CIE's exact fractions for the bend of the curve, where it meets the line without a step: (6/29)^3 is 216/24389.
  constexpr float kBend = Single(216.0 / 24389.0);
  const float bright = t > kBend ? t : kBend;
  const auto third = static_cast<std::int32_t>(static_cast<float>(std::bit_cast<std::int32_t>(bright)) * (1.0f / 3.0f));
  // A third of the bits is a third of the exponent; the constant puts the bias of the exponent right and makes the
  // error of the guess small on both sides.
  auto root = std::bit_cast<float>(third + 709921077);
  for (int i = 0; i < 2; ++i) {
    const float cube = root * root * root;
    // Halley's method, each step of which triples the number of correct digits.
    root = root * (cube + bright + bright) / (cube + cube + bright);
  }
  constexpr float kSlope = Single(24389.0 / 27.0 / 116.0);
  constexpr float kStart = Single(16.0 / 116.0);
  return t > kBend ? root : t * kSlope + kStart;
}

void LabRow(float* HWY_RESTRICT red, float* HWY_RESTRICT green, float* HWY_RESTRICT blue, std::size_t count) {
  // Each row divided by its sum, the white.
  constexpr float kMatrix[3][3] = {
      {Single(0.4124564 / 0.95047), Single(0.3575761 / 0.95047), Single(0.1804375 / 0.95047)},
      {Single(0.2126729), Single(0.7151522), Single(0.0721750)},
      {Single(0.0193339 / 1.08883), Single(0.1191920 / 1.08883), Single(0.9503041 / 1.08883)}};
  for (std::size_t i = 0; i < count; ++i) {
    const float x = LabCurve(kMatrix[0][0] * red[i] + kMatrix[0][1] * green[i] + kMatrix[0][2] * blue[i]);
    const float y = LabCurve(kMatrix[1][0] * red[i] + kMatrix[1][1] * green[i] + kMatrix[1][2] * blue[i]);
    const float z = LabCurve(kMatrix[2][0] * red[i] + kMatrix[2][1] * green[i] + kMatrix[2][2] * blue[i]);
    red[i] = 116.0f * y - 16.0f;
    green[i] = 500.0f * (x - y);
    blue[i] = 200.0f * (y - z);
  }
}

void PowerRow(const float* HWY_RESTRICT values, std::size_t count, double origin, TPowerParts& sums) {
  auto [first, second, third] = sums.parts;
  std::size_t i = 0;
  // Eight sums of each power, in a number that does not depend on the processor: the order of the additions is fixed.
  for (; i + TPowerParts::kParts <= count; i += TPowerParts::kParts) {
    for (std::size_t part = 0; part < TPowerParts::kParts; ++part) {
      const double d = values[i + part] - origin;
      first[part] += d;
      second[part] += d * d;
      third[part] += d * d * d;
    }
  }
  for (std::size_t part = 0; i < count; ++i, ++part) {
    const double d = values[i] - origin;
    first[part] += d;
    second[part] += d * d;
    third[part] += d * d * d;
  }
  sums.parts = {first, second, third};
}

}  // namespace rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rows {

HWY_EXPORT(LabRow);
HWY_EXPORT(PowerRow);

void ToLab(float* red, float* green, float* blue, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(LabRow)(red, green, blue, count);
}

void AddPowers(const float* values, std::size_t count, double origin, TPowerParts& sums) {
  HWY_DYNAMIC_DISPATCH(PowerRow)(values, count, origin, sums);
}

}  // namespace rows
#endif
