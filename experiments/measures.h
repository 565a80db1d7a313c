#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// What is measured of the ranking of a topic. R pictures are relevant, r_1 < r_2 < .. are the ranks, from 1, of those
/// that the ranking holds, and hits(k) is their number up to rank k.
enum class TMeasure {
  /// Average precision: (1 / R) sum over i of i / r_i. (C. Buckley, E. Voorhees, Evaluating evaluation measure
  /// stability,
  /// SIGIR 2000.)
  kAp,
  /// Precision at k: hits(k) / k, also where the ranking has fewer than k ranks. (C. van Rijsbergen, Information
  /// Retrieval, 2nd ed., 1979, ch. 7.)
  kP1,
  kP5,
  kP10,
  kP20,
  /// R-precision: hits(R) / R. (Buckley and Voorhees, as above.)
  kRprec,
  /// Reciprocal rank: 1 / r_1; 0 without any. (E. Voorhees, The TREC-8 question answering track report, TREC 1999.)
  kRr,
  /// Normalised discounted cumulative gain at 10: the sum of 1 / log2(r_i + 1) over r_i <= 10, divided by the same sum
  /// for min(R, 10) relevant pictures in front. (K. Jarvelin, J. Kekalainen, Cumulated gain-based evaluation of IR
  /// techniques, ACM TOIS 20(4), 2002, with gain 1.)
  kNdcg10,
  /// Recall at 100: hits(100) / R. (van Rijsbergen, as above.)
  kRecall100,
  /// The figure of the command evaluateindex: the sum of average precision divided by the number of all ranks.
  kApRanks
};

constexpr std::size_t kMeasureCount = 10;

/// The names of the measures as tables and options write them.
constexpr std::array<std::string_view, kMeasureCount> kMeasureNames = {
    "ap", "p1", "p5", "p10", "p20", "rprec", "rr", "ndcg10", "recall100", "ap_ranks"};

/// The values of one topic, or their means, by measure.
using TMeasures = std::array<double, kMeasureCount>;

inline double ValueOf(const TMeasures& measures, TMeasure measure) {
  return measures[static_cast<std::size_t>(measure)];
}

/// Recall 0.0, 0.1 .. 1.0.
constexpr std::size_t kRecallLevels = 11;

/// Precision at each level of recall, interpolated: the largest precision at any rank where the recall is that of the
/// level or more, 0 if there is none. (van Rijsbergen, as above.)
using TCurve = std::array<double, kRecallLevels>;

struct TTopicResult {
  TMeasures measures;
  TCurve curve;
};

/// Measures the ranking of a topic with `relevant` relevant pictures, at least one. `ranks` are those of the relevant
/// pictures in it, ascending; `rankCount` is the number of all its ranks.
TTopicResult MeasureTopic(std::span<const std::uint32_t> ranks, std::size_t relevant, std::size_t rankCount);
