#include "retrieval/recall-precision.h"

TRecallPrecision MeasureRanking(const std::vector<bool>& relevance, int relevantTotal) {
  TRecallPrecision result = {};
  result.curve.reserve(relevance.size());
  int hits = 0;
  int ranks = 0;
  double precisionSum = 0.0;
  for (const bool isRelevant : relevance) {
    ++ranks;
    hits += isRelevant ? 1 : 0;
    // Precision and recall at a cut-off: C. van Rijsbergen, Information Retrieval, 2nd ed., 1979, chapter 7.
    const double precision = static_cast<double>(hits) / ranks;
    if (isRelevant) {
      precisionSum += precision;
    }
    result.curve.push_back({static_cast<double>(hits) / relevantTotal, precision});
  }
  // By the number of all ranks. The usual average precision divides by the number of relevant images;
  // tessimar-experiment has both, this one as ap_ranks. Without ranks 0 / 0, a NaN.
  result.averagePrecision = precisionSum / ranks;
  return result;
}
