#include "concepts/var-visual-concept.h"

#include <algorithm>
#include <bit>
#include <cstddef>

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

bool TVarVisualConcept::FindParts(const TImageSegment& segment, const double** parts) const {
  return std::all_of(features.begin(), features.end(), [&](const TConceptFeature& feature) {
    const TFeatureVector* vector = segment.GetFeatures().Find(feature.name);
    *parts = vector == nullptr ? nullptr : vector->GetData();
    ++parts;
    return vector != nullptr && vector->GetLength() == feature.length;
  });
}

bool TVarVisualConcept::Join(const double* const* parts, TFeatureVector& combined) const {
  combined.SetLength(dimension);
  double* end = combined.GetData();
  std::uint64_t faults = 0;
  for (const TConceptFeature& feature : features) {
    const double* part = *parts++;
    for (std::uint32_t i = 0; i < feature.length; ++i) {
      end[i] = part[i];
      // A finite number less itself is 0, and no bit is set; everything else gives a NaN. That saves a second pass with
      // a branch for each number.
      faults |= std::bit_cast<std::uint64_t>(part[i] - part[i]);
    }
    end += feature.length;
  }
  return faults == 0;
}

bool TVarVisualConcept::Combine(const TImageSegment& segment, TFeatureVector& combined) const {
  std::vector<const double*> parts(features.size());
  return FindParts(segment, parts.data()) && Join(parts.data(), combined);
}

int TVarVisualConcept::Locate(const TClassifier& usedClassifier, const std::string& label, TVarImage& image) const {
  const auto& segments = image.GetSegments();
  // To find a vector is to wait for the memory several times. Where nothing stands between one search and the next, the
  // processor waits for many of them at once.
  std::vector<const double*> parts(segments.size() * features.size());
  std::vector<bool> isComplete(segments.size());
  for (std::size_t i = 0; i < segments.size(); ++i) {
    isComplete[i] = FindParts(*segments[i], parts.data() + i * features.size());
  }
  const std::string none;
  int skipped = 0;
  TFeatureVector combined;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const bool isUsable = isComplete[i] && Join(parts.data() + i * features.size(), combined);
    skipped += isUsable ? 0 : 1;
    const std::string& newLabel = isUsable && usedClassifier.Classify(combined) > 0.0 ? label : none;
    // To set a label is to look it up among all texts; most stay as they are.
    if (segments[i]->GetLabel() != newLabel) {
      segments[i]->SetLabel(newLabel);
    }
  }
  return skipped;
}
