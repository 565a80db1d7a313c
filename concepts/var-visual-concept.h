#pragma once

#include <memory>
#include <string>

#include "concepts/concept-vectors.h"
#include "engine/var.h"

class TClassifier;
class TVarImage;

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

  /// How the vector of a segment is made.
  TConceptVectors& GetVectors() { return vectors; }
  const TConceptVectors& GetVectors() const { return vectors; }

  /// Gives the label to every segment of the image on which the classifier answers positive, and an empty one to every
  /// other. Returns how many segments could not be combined; those are not found.
  int Locate(const TClassifier& usedClassifier, const std::string& label, TVarImage& image) const;

 private:
  std::weak_ptr<TClassifier> classifier;
  TConceptVectors vectors;
};
