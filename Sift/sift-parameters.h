#pragma once

#include <cstdint>

#include "Sift/sift-conv.h"

namespace VL {

/// The arguments of a detection: those of Sift's constructor and of DetectKeypoints, in their order. The values are
/// those of the workbench.
struct TSiftParameters {
  /// A photograph is taken to be blurred by half a pixel (section 3.3 of the paper named in sift.h).
  float_t sigman = 0.5F;
  /// 1.6 * 2^(1/3): level -1 then has the paper's scale of 1.6 (section 3.3).
  float_t sigma0 = 2.0158737F;
  std::int32_t O = 3;
  /// Three levels an octave repeat best (section 3.2).
  std::int32_t S = 3;
  /// Octaves of a half, a quarter and an eighth of the picture: the finest details, most of the work, are left out.
  std::int32_t omin = 1;
  std::int32_t smin = -1;
  std::int32_t smax = 4;
  /// 0.04 / S / 2, for pixels from 0 to 1.
  float_t threshold = 0.0066666664F;
  /// The paper's r (section 4.1).
  float_t edgeThreshold = 10.0F;
};

}  // namespace VL
