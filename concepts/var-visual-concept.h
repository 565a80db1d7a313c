#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/var.h"

class TClassifier;
class TFeatureVector;
class TFeatureVectorList;
class TImageSegment;
class TVarImage;

/// A part of every combined vector: a feature and the number of its elements.
struct TConceptFeature {
  std::string name;
  std::uint32_t length;
};

/// Something that can be seen in parts of images, of type "visualconcept": the features that make up the vector of a
/// segment, and the classifier that was taught with such vectors. The training lives in the classifier, which belongs
/// to its own variable; the concept only watches it, and all concepts that were learned with it share its state.
class TVarVisualConcept : public TVar {
 public:
  static constexpr const char* kTypeName = "visualconcept";

  TVarVisualConcept();

  std::unique_ptr<TVar> CreateNew() const override;
  /// Takes over the features, but not the classifier.
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;

  /// The classifier, for the length of one operation; null if there never was one or it is gone.
  std::shared_ptr<TClassifier> LockClassifier() const { return classifier.lock(); }
  void SetClassifier(const std::weak_ptr<TClassifier>& newClassifier) { classifier = newClassifier; }

  const std::vector<TConceptFeature>& GetFeatures() const { return features; }
  /// The length of a combined vector.
  std::uint32_t GetDimension() const { return dimension; }

  /// Takes the features that both lists have, in the order and with the lengths of the first.
  void CollectFeatures(const TFeatureVectorList& first, const TFeatureVectorList& second);

  /// Fills `combined` with the vectors of the segment, one behind the other. False, with `combined` undefined, if the
  /// segment lacks a feature, has it in another length, or has a number that is not finite.
  bool Combine(const TImageSegment& segment, TFeatureVector& combined) const;

  /// Gives the label to every segment of the image on which the classifier answers positive, and an empty one to every
  /// other. Returns how many segments could not be combined; those are not found.
  int Locate(const TClassifier& usedClassifier, const std::string& label, TVarImage& image) const;

 private:
  /// Fills `parts`, as many as there are features, with where the numbers of the segment's vectors lie. False, with
  /// `parts` undefined, if one is missing or has another length.
  bool FindParts(const TImageSegment& segment, const double** parts) const;
  /// Puts the numbers one behind the other. False if one is not finite.
  bool Join(const double* const* parts, TFeatureVector& combined) const;

  std::weak_ptr<TClassifier> classifier;
  std::vector<TConceptFeature> features;
  std::uint32_t dimension = 0;
};
