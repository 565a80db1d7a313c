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
    const double precision = static_cast<double>(hits) / ranks;
    if (isRelevant) {
      precisionSum += precision;
    }
    result.curve.push_back({static_cast<double>(hits) / relevantTotal, precision});
  }
  result.averagePrecision = precisionSum / ranks;
  return result;
}
