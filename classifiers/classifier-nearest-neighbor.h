#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <utility>

#include "classifiers/classifier.h"

class TDistanceBounds;

/// The classifier "nearest": the class of the one example with the smallest city-block (L1) distance. It learns
/// nothing, has no settings, and compares raw values.
///
/// Of examples that it owns it keeps a compact form, which rules out nearly all of them and takes an eighth of their
/// memory (at worst, for 65 numbers each, 0.27 of it). It is made at the first question after an example came or went;
/// what is in an example must not change before that. The answer is the one of comparing with them all, ties included.
class TClassifierNearestNeighbor : public TClassifier {
 public:
  TClassifierNearestNeighbor();
  ~TClassifierNearestNeighbor() override;

  /// Replaces the examples by those of the file; copyExamples is set from then on, since the classifier owns them. At
  /// most 2^24 elements a vector and, where vectors have no elements, 2^20 examples a list.
  bool Load(std::FILE* file) override;

  /// Writes int32 vector length n, int32 count and n doubles for each positive example, the same for the negative ones
  /// (without n). n is the length of the first example. False, with nothing written, if an example is shorter.
  bool Save(std::FILE* file) const override;

  /// 1, -1, or 0 without an example to compare with. Of equally near ones the first wins, positives before negatives.
  /// An example that is `vector` itself, the same object, does not find itself; one of another length is passed over.
  double Classify(const TFeatureVector& vector) const override;

  /// (n - p) / (n + p) with the distances p and n to the nearest positive and negative example, 0 if both are 0: from
  /// -1 to 1. Where one class has no example to compare with, the other one's end; 0 where both have none.
  double Score(const TFeatureVector& vector) const override;

 private:
  /// Brings `bounds` up to date with the examples.
  void UpdateBounds() const;
  std::unique_ptr<TDistanceBounds> MakeBounds() const;
  const TFeatureVector* Example(std::size_t row) const;
  /// What a comparison with all examples gives too; `bounds` knows the query.
  double ClassifyWithBounds(const TFeatureVector& vector) const;

  /// The bounds from all examples, positives first; null if there are none for them as they are.
  mutable std::unique_ptr<TDistanceBounds> bounds;
  /// The states of the two lists that they are for.
  mutable std::pair<std::uint32_t, std::uint32_t> boundsRevision;
};
