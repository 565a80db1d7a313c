#include "images/feature-vector.h"

#include <algorithm>

void TFeatureVector::SetLength(std::uint32_t newLength) {
  if (newLength == length) {
    return;
  }
  // Free first: two vectors of the largest size need not fit side by side.
  data.reset();
  // Without memory the vector is empty, and not long without numbers.
  length = 0;
  // Without zeros: whoever sets a length writes every element next.
  data = std::make_unique_for_overwrite<double[]>(newLength);
  length = newLength;
}

void TFeatureVector::Clear() {
  std::fill_n(data.get(), length, 0.0);
}

void TFeatureVector::Assign(const TFeatureVector& other) {
  if (this == &other) {
    return;
  }
  SetLength(other.length);
  std::copy_n(other.data.get(), length, data.get());
  name = other.name;
  lacksPicture = other.lacksPicture;
}
