#pragma once

#include <cstdint>

#include "kernels/packed-rows.h"

struct svm_model;

/// What a model of the libsvm library decides for a vector: the decision value of its svm_predict_values to the last
/// bit, in a fraction of the time, over a copy of the support vectors in which several lie abreast. The library walks
/// along its lists of pairs of index and value, one support vector at a time.
class TSvmDecision {
 public:
  /// For a model of C-SVC with one or two classes, a linear, polynomial or radial kernel, and support vectors that have
  /// every index from 0 to length - 1. The model must outlive the decision.
  TSvmDecision(const svm_model& model, std::uint32_t length);

  /// The library's label for a vector of that length; for one of any length if there is no support vector.
  double Label(const double* values) const;

  /// The sum over all support vectors of coefficient * kernel, less the threshold. For a model of two classes only.
  double Value(const double* values) const;

 private:
  /// Turns a sum over the elements into the kernel's value, with the library's own steps.
  double KernelValue(double sum) const;

  const svm_model& model;
  kernels::TPackedRows supportVectors;
};
