#include "kernels/cubic-weights.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kernels {
namespace {

/// The cubic convolution kernel with a = -1/2 (R. Keys, 1981), also known as Catmull-Rom.
double CubicKernel(double t) {
  t = std::fabs(t);
  if (t < 1.0) {
    return (1.5 * t - 2.5) * t * t + 1.0;
  }
  if (t < 2.0) {
    return ((-0.5 * t + 2.5) * t - 4.0) * t + 2.0;
  }
  return 0.0;
}

}  // namespace

TCubicWeights::TCubicWeights(int inputLength, int length) {
  const double step = static_cast<double>(inputLength) / length;
  // When shrinking the kernel is as many times wider, so that every input has its part and fine detail is averaged
  // instead of picked at random.
  const double width = std::max(step, 1.0);
  const double reach = 2.0 * width;
  // The kernel spans 2 * reach inputs. Where the whole input is shorter, every output takes all of it.
  taps = static_cast<int>(std::min(std::ceil(2.0 * reach), static_cast<double>(inputLength)));
  // Eight 16-bit weights fill the narrowest vector that the resize kernel works with.
  pitch = (taps + 7) / 8 * 8;
  first.resize(static_cast<std::size_t>(length));
  weights.resize(static_cast<std::size_t>(length) * static_cast<std::size_t>(pitch));

  std::vector<double> exact(static_cast<std::size_t>(taps));
  for (int x = 0; x < length; ++x) {
    // Pixels are squares: the center of pixel i is at i + 1/2.
    const double center = (x + 0.5) * step;
    // Moved inwards at the edges: the taps stay inside the picture, and those that the kernel does not reach get the
    // weight 0 from CubicKernel().
    const int begin = std::clamp(static_cast<int>(std::ceil(center - reach - 0.5)), 0, inputLength - taps);
    double sum = 0.0;
    for (int t = 0; t < taps; ++t) {
      exact[t] = CubicKernel((begin + t + 0.5 - center) / width);
      sum += exact[t];
    }
    // The running total is rounded, not each weight: so the weights sum to one whatever their number, and even many
    // tiny ones, each far less than a unit, keep their share.
    std::int16_t* row = weights.data() + static_cast<std::size_t>(x) * static_cast<std::size_t>(pitch);
    double total = 0.0;
    long previous = 0;
    for (int t = 0; t < taps; ++t) {
      total += exact[t];
      const long rounded = std::lround(total / sum * (1 << kCubicWeightBits));
      row[t] = static_cast<std::int16_t>(rounded - previous);
      previous = rounded;
    }
    first[x] = begin;
  }
}

}  // namespace kernels
