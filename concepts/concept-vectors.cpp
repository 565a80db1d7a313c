#include "concepts/concept-vectors.h"

#include <algorithm>
#include <bit>

#include "images/feature-vector-list.h"
#include "segmentation/image-segment.h"

void TConceptVectors::CollectFeatures(const TFeatureVectorList& first, const TFeatureVectorList& second) {
  features.clear();
  dimension = 0;
  for (const TFeatureVector* vector : first.GetItems()) {
    // By name alone. That lengths agree is tested segment by segment, where it matters.
    if (second.Find(vector->GetName()) != nullptr) {
      features.push_back({vector->GetName(), vector->GetLength()});
      dimension += vector->GetLength();
    }
  }
}

bool TConceptVectors::FindParts(const TImageSegment& segment, const double** parts) const {
  return std::all_of(features.begin(), features.end(), [&](const TConceptFeature& feature) {
    const TFeatureVector* vector = segment.GetFeatures().Find(feature.name);
    // Where the vectors lie, without copying them.
    *parts = vector == nullptr ? nullptr : vector->GetData();
    ++parts;
    return vector != nullptr && vector->GetLength() == feature.length;
  });
}

bool TConceptVectors::Join(const double* const* parts, TFeatureVector& combined) const {
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

bool TConceptVectors::Combine(const TImageSegment& segment, TFeatureVector& combined) const {
  std::vector<const double*> parts(features.size());
  return FindParts(segment, parts.data()) && Join(parts.data(), combined);
}
