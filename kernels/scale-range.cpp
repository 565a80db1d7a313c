#include "kernels/scale-range.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/scale-range.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

template <class D>
HWY_INLINE void ScaleLanes(D d, const double* minimum, const double* maximum, double* values) {
  const auto smallest = LoadU(d, minimum);
  const auto value = LoadU(d, values);
  const auto range = Sub(LoadU(d, maximum), smallest);
  // In the order of the formula, each step rounded by itself: the scaled examples become part of stored models, which
  // must not depend on the processor.
  const auto scaled = Sub(Div(Mul(Set(d, 2.0), Sub(value, smallest)), range), Set(d, 1.0));
  // A dimension in which all examples agree has no range. Its quotient, NaN or infinite, is worked out and dropped; a
  // branch would cost more. A range that is a NaN is not above 0 and counts as none.
  StoreU(IfThenElse(Gt(range, Zero(d)), scaled, value), d, values);
}

}  // namespace

void ScaleRange(const double* HWY_RESTRICT minimum, const double* HWY_RESTRICT maximum, size_t length,
                double* HWY_RESTRICT values) {
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  size_t i = 0;
  for (; i + lanes <= length; i += lanes) {
    ScaleLanes(d, minimum + i, maximum + i, values + i);
  }
  for (; i < length; ++i) {
    ScaleLanes(hn::CappedTag<double, 1>(), minimum + i, maximum + i, values + i);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(ScaleRange);

void ScaleRange(const double* minimum, const double* maximum, std::size_t length, double* values) {
  HWY_DYNAMIC_DISPATCH(ScaleRange)(minimum, maximum, length, values);
}

}  // namespace kernels
#endif
