#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "experiments/damage.h"
#include "experiments/measures.h"
#include "experiments/statistics.h"

/// A question put to the collection: a query, and a tag that makes pictures relevant.
struct TTopic {
  /// The name of the topic in runs and judgements.
  std::string qid;
  /// The query's name, and the tag. Where rankings came from elsewhere the qid, and no tag.
  std::string picture;
  std::string tag;
  /// The query among those of the experiment, from 0; topics of one picture share it.
  std::size_t query;
  /// The number of relevant pictures.
  std::size_t relevant;
};

/// A mean over topics.
struct TSummaryRow {
  /// A position in TExperiment::sets.
  std::size_t set;
  /// Empty: all topics.
  std::string tag;
  TMeasure measure;
  std::size_t topics;
  double mean;
  /// For all topics only.
  std::optional<TInterval> interval;
};

/// Set b against set a (positions in TExperiment::sets, a < b) by average precision.
struct TComparison {
  std::size_t a;
  std::size_t b;
  /// The mean of b less that of a.
  double difference;
  TInterval interval;
  /// Topics on which b is above a, equal to it, and below it.
  std::size_t wins;
  std::size_t ties;
  std::size_t losses;
  double p;
  double pHolm;
};

/// The results of an experiment.
struct TExperiment {
  /// The sets of features, or the runs, in the order of the command line.
  std::vector<std::string> sets;
  /// Tags in byte order, the topics of a tag in the order of the collection.
  std::vector<TTopic> topics;
  /// The number of different queries among the topics.
  std::size_t queryCount = 0;
  /// results[set][topic].
  std::vector<std::vector<TTopicResult>> results;

  /// Set by set: all topics first, then tag by tag; the measures of each in their order.
  std::vector<TSummaryRow> summary;
  /// The mean curve of each set.
  std::vector<TCurve> curves;
  /// All pairs, (0, 1), (0, 2) .. (1, 2) ..
  std::vector<TComparison> comparisons;

  TDamageList damage;
};

/// Works out summary, curves and comparisons from the results.
void Summarise(TExperiment& experiment, std::uint32_t seed);

/// The mean of a measure over all topics of a set.
double MeanOf(const TExperiment& experiment, std::size_t set, TMeasure measure);
