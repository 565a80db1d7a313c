#include "concepts/var-visual-concept.h"

#include <algorithm>
#include <cmath>

#include "classifiers/classifier.h"
#include "images/feature-vector-list.h"
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
  features = other->features;
  dimension = other->dimension;
}

std::string TVarVisualConcept::GetDescription() const {
  return "visualconcept";
}

void TVarVisualConcept::CollectFeatures(const TFeatureVectorList& first, const TFeatureVectorList& second) {
  features.clear();
  dimension = 0;
  for (const TFeatureVector* vector : first.GetItems()) {
    if (second.Find(vector->GetName()) != nullptr) {
      features.push_back({vector->GetName(), vector->GetLength()});
      dimension += vector->GetLength();
    }
  }
}

bool TVarVisualConcept::Combine(const TImageSegment& segment, TFeatureVector& combined) const {
  combined.SetLength(dimension);
  double* end = combined.GetData();
  for (const TConceptFeature& feature : features) {
    const TFeatureVector* vector = segment.GetFeatures().Find(feature.name);
    if (vector == nullptr || vector->GetLength() != feature.length) {
      return false;
    }
    end = std::copy_n(vector->GetData(), feature.length, end);
  }
  return std::all_of(combined.GetData(), end, [](double number) { return std::isfinite(number); });
}

int TVarVisualConcept::Locate(const TClassifier& usedClassifier, const std::string& label, TVarImage& image) const {
  int skipped = 0;
  TFeatureVector combined;
  for (const auto& segment : image.GetSegments()) {
    const bool isUsable = Combine(*segment, combined);
    skipped += isUsable ? 0 : 1;
    const bool isFound = isUsable && usedClassifier.Classify(combined) > 0.0;
    segment->SetLabel(isFound ? label : std::string());
  }
  return skipped;
}
