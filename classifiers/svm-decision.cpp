#include "classifiers/svm-decision.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include <svm.h>

namespace {

/// A power with the library's products in the library's order.
double Power(double base, int exponent) {
  double power = 1.0;
  // Squaring and multiplying, as the library does: std::pow may round differently in the last bit.
  for (; exponent > 0; exponent /= 2) {
    if (exponent % 2 == 1) {
      power *= base;
    }
    base *= base;
  }
  return power;
}

}  // namespace

TSvmDecision::TSvmDecision(const svm_model& theModel, std::uint32_t length)
    : model(theModel), supportVectors(static_cast<std::size_t>(theModel.l), length) {
  for (std::size_t row = 0; row < supportVectors.GetCount(); ++row) {
    for (std::size_t i = 0; i < length; ++i) {
      supportVectors.Set(row, i, theModel.SV[row][i].value);
    }
  }
}

double TSvmDecision::Label(const double* values) const {
  // A NaN goes to the second class, as any value that is not above 0 does.
  // With one class there is nothing to decide, and no support vector.
  return model.nr_class < 2 || Value(values) > 0 ? model.label[0] : model.label[1];
}

double TSvmDecision::Value(const double* values) const {
  std::vector<double> sums(supportVectors.RoundedCount());
  if (model.param.kernel_type == RBF) {
    supportVectors.SquaredDistances(values, sums.data());
  } else {
    supportVectors.DotProducts(values, sums.data());
  }
  // With two classes the coefficients of both stand in the first row.
  const double* const coefficients = model.sv_coef[0];
  double value = 0.0;
  for (std::size_t row = 0; row < supportVectors.GetCount(); ++row) {
    // One support vector after the other, in the library's order: the sum is the same to the last bit.
    value += coefficients[row] * KernelValue(sums[row]);
  }
  return value - model.rho[0];
}

double TSvmDecision::KernelValue(double sum) const {
  const svm_parameter& parameter = model.param;
  switch (parameter.kernel_type) {
    case RBF:
      return std::exp(-parameter.gamma * sum);
    case POLY:
      return Power(parameter.gamma * sum + parameter.coef0, parameter.degree);
    default:
      return sum;
  }
}
