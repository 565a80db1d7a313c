// The linear scaling of features from their ranges over the examples to that from -1 to 1.
#pragma once

#include <cstddef>

namespace kernels {

/// For each of `length` values whose range is not empty:
///
///   values[i] = 2 * (values[i] - minimum[i]) / (maximum[i] - minimum[i]) - 1
///
/// from left to right, each step rounded. The others stay.
void ScaleRange(const double* minimum, const double* maximum, std::size_t length, double* values);

}  // namespace kernels
