#pragma once

#include <string>
#include <vector>

/// What a ranking is worth against ground truth.
struct TRecallPrecision {
  /// The curve as text: one line a rank, recall and precision over the results up to there with eight decimals each,
  /// "%.08f %.08f\r\n". A recall of 0 / 0 is written as "nan".
  std::string curve;
  /// The sum of the precisions at the ranks of relevant results, divided by the number of all ranks.
  double map;
};

/// Measures a ranking. `relevance` tells for each rank whether the image there is relevant; `relevantTotal` images are.
TRecallPrecision MeasureRanking(const std::vector<bool>& relevance, int relevantTotal);

/// The script that has gnuplot draw the curve, with the tag as the curve's title.
std::string FormatPlotScript(const std::string& tag);

/// False for a tag that gnuplot would read as part of its own language: one with a double quote, a back quote or a
/// control character, or with a backslash at its end. A script with such a tag must not be run.
bool IsSafePlotTitle(const std::string& tag);

/// Writes a number from 0 to 1 as printf's "%.08f" does, a NaN as "nan", without a zero behind it. `text` has room for
/// 10 characters; the result is the end of what was written.
char* WriteEightDecimals(double number, char* text);
