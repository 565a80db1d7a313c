#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include "classifiers/classifier.h"

class TSvmDecision;
struct svm_model;
struct svm_parameter;

/// The classifier "svm": a C-support vector machine of the libsvm library on scaled examples. The answer is the
/// predicted label, without a measure of certainty.
///
/// Setting: "kernel", which is "linear", "poly", or the radial basis function for any other text. All other parameters
/// are constants; C is 2^15.
class TClassifierSVM : public TClassifier {
 public:
  TClassifierSVM();
  ~TClassifierSVM() override;

  /// Takes over scaling, parameters and model; examples and training set stay. Scaling is on afterwards if the file has
  /// a range.
  bool Load(std::FILE* file) override;

  /// Writes the block of TClassifier, the parameters in 96 bytes (svm-parameter-record.h), then the bytes of the
  /// library's model file behind their 32-bit size, which is 0 for an untrained classifier. The library needs a file of
  /// its own: "svm-temp-%d.dat" in the working directory, gone on return. False too if that cannot be made.
  bool Save(std::FILE* file) const override;

  /// Starts from nothing: the old model goes first. Examples of length 0, or parameters that the library refuses, leave
  /// the classifier untrained. The library reports to standard output.
  void Train() override;

  /// 1 or -1; 0 if untrained.
  double Classify(const TFeatureVector& vector) const override;

  /// The decision value towards the positive class, of the scaled vector (C. Cortes, V. Vapnik, Machine Learning 20,
  /// 1995: above 0 on the positive side of the boundary, 1 at the margin). 0 if untrained; what Classify returns if all
  /// examples were of one class.
  double Score(const TFeatureVector& vector) const override;

 private:
  struct TProblem;
  struct TFreeModel {
    void operator()(svm_model* model) const;
  };

  void SetDefaultParameters();
  void FreeModel();
  void BuildProblem();
  void AddProblemRow(const TFeatureVector& example, double label, std::int32_t row);
  void ApplyKernelSetting();
  /// The vector as the model takes it; nothing if there is no model for one of its length.
  std::optional<std::vector<double>> ModelInput(const TFeatureVector& vector) const;

  /// The rows of the last training. A model from training refers to them, so that it has to go before they do.
  std::unique_ptr<TProblem> problem;
  const std::unique_ptr<svm_parameter> parameters;
  std::unique_ptr<svm_model, TFreeModel> model;
  /// Answers for the model; there is one exactly if there is a model.
  std::unique_ptr<TSvmDecision> decision;
  /// The rows in the problem.
  std::int32_t exampleCount = 0;
  /// The elements of the vectors that the model knows; 0 if a loaded one did not tell.
  std::uint32_t rowLength = 0;
};
