#include "concepts/var-visual-concept.h"

#include <cstddef>

#include "classifiers/classifier.h"
#include "images/feature-vector.h"
#include "images/var-image.h"
#include "segmentation/image-segment.h"

TVarVisualConcept::TVarVisualConcept() : TVar(kTypeName) {}

std::unique_ptr<TVar> TVarVisualConcept::CreateNew() const {
  return std::make_unique<TVarVisualConcept>();
}

void TVarVisualConcept::Assign(const TVar* source) {
  const auto* other = dynamic_cast<const TVarVisualConcept*>(source);
  if (other == nullptr || other == this) {
    return;
  }
  // Not the classifier: the copy would answer with a training that it never had. It has to be learned anew.
  vectors = other->vectors;
}

std::string TVarVisualConcept::GetDescription() const {
  return "visualconcept";
}

int TVarVisualConcept::Locate(const TClassifier& usedClassifier, const std::string& label, TVarImage& image) const {
  const auto& segments = image.GetSegments();
  // To find a vector is to wait for the memory several times. Where nothing stands between one search and the next, the
  // processor waits for many of them at once.
  const std::size_t partCount = vectors.GetFeatures().size();
  std::vector<const double*> parts(segments.size() * partCount);
  std::vector<bool> isComplete(segments.size());
  for (std::size_t i = 0; i < segments.size(); ++i) {
    isComplete[i] = vectors.FindParts(*segments[i], parts.data() + i * partCount);
  }
  const std::string none;
  int skipped = 0;
  TFeatureVector combined;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const bool isUsable = isComplete[i] && vectors.Join(parts.data() + i * partCount, combined);
    skipped += isUsable ? 0 : 1;
    const std::string& newLabel = isUsable && usedClassifier.Classify(combined) > 0.0 ? label : none;
    // To set a label is to look it up among all texts; most stay as they are.
    if (segments[i]->GetLabel() != newLabel) {
      segments[i]->SetLabel(newLabel);
    }
  }
  return skipped;
}
