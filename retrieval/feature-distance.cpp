#include "retrieval/feature-distance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "images/feature-vector-list.h"
#include "kernels/l1-distance.h"

std::vector<double> GetDistances(const TFeatureVectorList& query, const std::vector<std::string>& featureNames,
                                 const std::vector<const TFeatureVectorList*>& lists) {
  // Infinity keeps an image in its ranking, behind all others and in the order of the database; leaving it out would
  // shift positions.
  constexpr double kUnreachable = std::numeric_limits<double>::infinity();
  std::vector<std::span<const double>> wanted;
  for (const std::string& featureName : featureNames) {
    const TFeatureVector* vector = query.Find(featureName);
    wanted.emplace_back(vector->GetData(), vector->GetLength());
  }
  std::vector<double> sums(lists.size(), 0.0);
  std::vector<const double*> candidates;
  candidates.reserve(lists.size() * wanted.size());
  for (std::size_t i = 0; i < lists.size(); ++i) {
    for (std::size_t f = 0; f < wanted.size(); ++f) {
      const TFeatureVector* vector = lists[i]->Find(featureNames[f]);
      if (vector != nullptr && vector->GetLength() >= wanted[f].size()) {
        candidates.push_back(vector->GetData());
      } else {
        // The query stands in for what is missing; nothing finite can bring the sum back from infinity.
        candidates.push_back(wanted[f].data());
        sums[i] = kUnreachable;
      }
    }
  }
  // Of histograms that sum to 1 the distance is 2 * (1 - intersection), so that it ranks them as the intersection does
  // (M. Swain and D. Ballard, "Color Indexing", 1991).
  kernels::AddL1Distances(wanted, candidates.data(), lists.size(), sums.data());
  // A NaN compares with nothing, and would make the order of a sort undefined.
  std::replace_if(
      sums.begin(), sums.end(), [](double sum) { return std::isnan(sum); }, kUnreachable);
  return sums;
}
