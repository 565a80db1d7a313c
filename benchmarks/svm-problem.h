#pragma once

#include <memory>
#include <vector>

#include <svm.h>

#include "classifiers/classifier.h"

/// The examples of a classifier, which training has scaled, as the library takes them, with the parameters that the
/// classifier "svm" has by default.
class TProblem {
 public:
  explicit TProblem(const TClassifier& classifier);

  svm_model* Train();

  std::vector<std::unique_ptr<svm_node[]>> rows;

 private:
  void AddRows(const TFeatureVectorList& examples, double label);

  std::vector<double> labels;
  svm_parameter parameter = {};
};
