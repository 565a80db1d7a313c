#pragma once

#include <cstdio>

#include "classifiers/classifier.h"

/// The classifier "nearest": the class of the one example with the smallest city-block (L1) distance. It learns
/// nothing, has no settings, and compares raw values.
class TClassifierNearestNeighbor : public TClassifier {
 public:
  TClassifierNearestNeighbor();

  /// Replaces the examples by those of the file; copyExamples is set from then on, since the classifier owns them. At
  /// most 2^24 elements a vector and, where vectors have no elements, 2^20 examples a list.
  bool Load(std::FILE* file) override;

  /// Writes int32 vector length n, int32 count and n doubles for each positive example, the same for the negative ones
  /// (without n). n is the length of the first example. False, with nothing written, if an example is shorter.
  bool Save(std::FILE* file) const override;

  /// 1, -1, or 0 without an example to compare with. Of equally near ones the first wins, positives before negatives.
  /// An example that is `vector` itself, the same object, does not find itself; one of another length is passed over.
  double Classify(const TFeatureVector& vector) const override;
};
