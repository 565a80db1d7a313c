#include "features/histogram-vector.h"

#include <algorithm>

#include "images/feature-vector.h"

void SetHistogram(const std::string& name, const TByteHistogram& counts, double total, TFeatureVector& vector) {
  // No total is refused: a ranking puts a distance that is a NaN behind all others.
  vector.SetName(name);
  vector.SetLength(kHistogramLength);
  std::transform(counts.begin(), counts.end(), vector.GetData(),
                 [total](std::uint64_t count) { return static_cast<double>(count) / total; });
}
