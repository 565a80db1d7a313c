#include "segmentation/image-segment.h"

#include <utility>

void TImageSegment::Assign(const TImageSegment& source) {
  if (this == &source) {
    return;
  }
  features.Clear();
  // Deep copies: the list deletes what it owns, and two lists must not own the same vector.
  for (const TFeatureVector* vector : source.features.GetItems()) {
    auto copy = std::make_unique<TFeatureVector>();
    copy->Assign(*vector);
    features.Add(copy.release());
  }
}

void TImageSegmentRect::Assign(const TImageSegment& source) {
  TImageSegment::Assign(source);
  if (const auto* rect = dynamic_cast<const TImageSegmentRect*>(&source)) {
    x = rect->x;
    y = rect->y;
    width = rect->width;
    height = rect->height;
  }
}

std::unique_ptr<TImageSegment> TImageSegmentRect::Clone() const {
  auto clone = std::make_unique<TImageSegmentRect>();
  // The label stays behind: it tells what was found by a search on the original.
  clone->Assign(*this);
  return clone;
}

void ClearSegments(TImageSegmentList& list) {
  list.clear();
}

void CopySegments(TImageSegmentList& destination, const TImageSegmentList& source) {
  if (&destination == &source) {
    return;
  }
  ClearSegments(destination);
  destination.reserve(source.size());
  for (const auto& segment : source) {
    if (segment) {
      destination.push_back(segment->Clone());
    }
  }
}
