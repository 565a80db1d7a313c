#pragma once

#include <vector>

/// The first results of a ranking, up to one rank, against ground truth.
struct TRecallPrecisionPoint {
  /// The share of all relevant images that is among the results; a NaN if no image is relevant.
  double recall;
  /// The share of the results that is relevant.
  double precision;
};

/// What a ranking is worth against ground truth.
struct TRecallPrecision {
  /// One point a rank, from the first to the last.
  std::vector<TRecallPrecisionPoint> curve;
  /// The sum of the precisions at the ranks of relevant results, divided by the number of all ranks.
  double averagePrecision;
};

/// Measures a ranking. `relevance` tells for each rank whether the image there is relevant; `relevantTotal` images are.
TRecallPrecision MeasureRanking(const std::vector<bool>& relevance, int relevantTotal);
