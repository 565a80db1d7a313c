#include "retrieval/feature-distance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "images/feature-vector-list.h"
#include "kernels/l1-distance.h"

std::vector<double> GetDistances(const TFeatureVectorList& query, const std::vector<std::string>& featureNames,
                                 const std::vector<const TFeatureVectorList*>& lists) {
  constexpr double kUnreachable = std::numeric_limits<double>::infinity();
  std::vector<double> sums(lists.size(), 0.0);
  std::vector<const double*> candidates(lists.size());
  for (const std::string& featureName : featureNames) {
    const TFeatureVector& wanted = *query.Find(featureName);
    for (std::size_t i = 0; i < lists.size(); ++i) {
      const TFeatureVector* vector = lists[i]->Find(featureName);
      if (vector != nullptr && vector->GetLength() >= wanted.GetLength()) {
        candidates[i] = vector->GetData();
      } else {
        // The query stands in for what is missing; nothing finite can bring the sum back from infinity.
        candidates[i] = wanted.GetData();
        sums[i] = kUnreachable;
      }
    }
    kernels::AddL1Distances(wanted.GetData(), wanted.GetLength(), candidates.data(), candidates.size(), sums.data());
  }
  std::replace_if(
      sums.begin(), sums.end(), [](double sum) { return std::isnan(sum); }, kUnreachable);
  return sums;
}
