#include "benchmarks/svm-problem.h"

#include <cstddef>

TProblem::TProblem(const TClassifier& classifier) {
  AddRows(classifier.GetPositiveExamples(), 1.0);
  AddRows(classifier.GetNegativeExamples(), -1.0);
  parameter.svm_type = C_SVC;
  parameter.kernel_type = RBF;
  parameter.gamma = 1.0 / classifier.GetPositiveExamples().GetItems().front()->GetLength();
  parameter.cache_size = 100;
  parameter.eps = 0.001;
  parameter.C = 32768;
  parameter.shrinking = 1;
}

svm_model* TProblem::Train() {
  std::vector<svm_node*> pointers;
  for (auto& row : rows) {
    pointers.push_back(row.get());
  }
  const svm_problem problem = {static_cast<int>(rows.size()), labels.data(), pointers.data()};
  return svm_train(&problem, &parameter);
}

void TProblem::AddRows(const TFeatureVectorList& examples, double label) {
  for (const TFeatureVector* example : examples.GetItems()) {
    const auto length = static_cast<int>(example->GetLength());
    rows.push_back(std::make_unique_for_overwrite<svm_node[]>(example->GetLength() + std::size_t{1}));
    for (int i = 0; i < length; ++i) {
      rows.back()[static_cast<std::size_t>(i)] = {i, example->GetData()[i]};
    }
    rows.back()[example->GetLength()] = {-1, 0.0};
    labels.push_back(label);
  }
}
