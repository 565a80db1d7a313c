#pragma once

#include <cstdint>
#include <string>
#include <vector>

class TFeatureVector;
class TFeatureVectorList;
class TImageSegment;

/// A part of every combined vector: a feature and the number of its elements.
struct TConceptFeature {
  std::string name;
  std::uint32_t length;
};

/// How the features of a segment become the one vector that a classifier is taught with and asked about.
class TConceptVectors {
 public:
  const std::vector<TConceptFeature>& GetFeatures() const { return features; }
  /// The length of a combined vector.
  std::uint32_t GetDimension() const { return dimension; }

  /// Takes the features that both lists have, in the order and with the lengths of the first.
  void CollectFeatures(const TFeatureVectorList& first, const TFeatureVectorList& second);

  /// Fills `combined` with the vectors of the segment, one behind the other. False, with `combined` undefined, if the
  /// segment lacks a feature, has it in another length, or has a number that is not finite.
  bool Combine(const TImageSegment& segment, TFeatureVector& combined) const;

  /// Combine in two steps. FindParts fills `parts`, as many as there are features, with where the numbers of the
  /// segment's vectors lie; false, with `parts` undefined, if one is missing or has another length.
  bool FindParts(const TImageSegment& segment, const double** parts) const;
  /// Puts the numbers one behind the other. False if one is not finite.
  bool Join(const double* const* parts, TFeatureVector& combined) const;

 private:
  std::vector<TConceptFeature> features;
  std::uint32_t dimension = 0;
};
