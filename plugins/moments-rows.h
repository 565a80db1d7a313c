#pragma once

#include <array>
#include <cstddef>

/// The loops over rows of moments.cpp, compiled for each level of vectors and chosen at run time. Each element is
/// computed by itself and without fused products, and sums have a fixed number of parts, so that all levels give the
/// same bytes.
namespace rows {

/// Turns linear red, green and blue, 0 to 1, into L*, a* and b*. The relative error of the cube root is below 3e-7,
/// that of a* and b* below 3e-4.
void ToLab(float* red, float* green, float* blue, std::size_t count);

/// Sums of the first three powers in parts that are added up side by side.
struct TPowerParts {
  static constexpr std::size_t kParts = 8;
  std::array<std::array<double, kParts>, 3> parts = {};

  double Sum(std::size_t power) const {
    double sum = 0.0;
    for (const double part : parts[power]) {
      sum += part;
    }
    return sum;
  }
};
/// Adds the powers of the differences from `origin`.
void AddPowers(const float* values, std::size_t count, double origin, TPowerParts& sums);

}  // namespace rows
