// The weights of cubic resampling along one axis.
#pragma once

#include <cstdint>
#include <vector>

namespace kernels {

/// Weights are whole multiples of 2^-14: the greatest possible weight, a little over one, fits into 16 bits with a
/// sign.
constexpr int kCubicWeightBits = 14;

/// For each of `length` outputs the inputs that make it, and their weights:
///
///   output[x] = sum over t of weights[x * pitch + t] * input[first[x] + t],   0 <= t < taps
///
/// Every output has the same number of taps, all of which lie within the input; weights that the kernel does not reach
/// are zero. The weights of one output sum to exactly 1 << kCubicWeightBits. From `taps` up to `pitch`, a multiple of
/// eight, a row of weights is filled with zeros.
struct TCubicWeights {
  /// Both lengths are at least 1.
  TCubicWeights(int inputLength, int length);

  int taps;
  int pitch;
  std::vector<int> first;
  std::vector<std::int16_t> weights;
};

}  // namespace kernels
