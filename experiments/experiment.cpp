#include "experiments/experiment.h"

#include <algorithm>
#include <map>

namespace {

double ApOf(const TExperiment& experiment, std::size_t set, std::size_t topic) {
  // Average precision is the measure of all comparisons: C. Buckley and E. Voorhees (SIGIR 2000) found it more stable
  // than precision at a cut-off.
  return ValueOf(experiment.results[set][topic].measures, TMeasure::kAp);
}

std::vector<std::size_t> AllTopics(const TExperiment& experiment) {
  std::vector<std::size_t> topics(experiment.topics.size());
  for (std::size_t i = 0; i < topics.size(); ++i) {
    topics[i] = i;
  }
  return topics;
}

void AddMeans(TExperiment& experiment, std::size_t set, const std::string& tag,
              const std::vector<std::size_t>& topics) {
  for (std::size_t m = 0; m < kMeasureCount; ++m) {
    // In the order of the topics, which no division into parts changes: another order would round to other last digits.
    double sum = 0.0;
    for (const std::size_t topic : topics) {
      sum += experiment.results[set][topic].measures[m];
    }
    experiment.summary.push_back(
        {set, tag, static_cast<TMeasure>(m), topics.size(), sum / static_cast<double>(topics.size()), std::nullopt});
  }
}

/// A comparison without its interval and its p.
TComparison Compare(const TExperiment& experiment, std::size_t a, std::size_t b) {
  TComparison comparison = {a, b, 0.0, {}, 0, 0, 0, 0.0, 0.0};
  double sum = 0.0;
  for (std::size_t topic = 0; topic < experiment.topics.size(); ++topic) {
    // Held against 0 exactly: where the relevant pictures have the same ranks, both sets have the same bits.
    const double difference = ApOf(experiment, b, topic) - ApOf(experiment, a, topic);
    sum += difference;
    comparison.wins += difference > 0.0 ? 1 : 0;
    comparison.ties += difference == 0.0 ? 1 : 0;
    comparison.losses += difference < 0.0 ? 1 : 0;
  }
  comparison.difference = sum / static_cast<double>(experiment.topics.size());
  return comparison;
}

/// The measures of all sets, then the differences of all comparisons.
TPictureSums SumByPicture(const TExperiment& experiment) {
  const std::size_t measureColumns = experiment.sets.size() * kMeasureCount;
  TPictureSums pictures;
  // One column for each figure that gets an interval, so that all of them come from the same resamples.
  pictures.columns = measureColumns + experiment.comparisons.size();
  pictures.sums.resize(experiment.queryCount * pictures.columns);
  pictures.topicCounts.resize(experiment.queryCount);
  for (std::size_t topic = 0; topic < experiment.topics.size(); ++topic) {
    const std::size_t query = experiment.topics[topic].query;
    // The picture is what is drawn: topics of one picture rank the same pictures and are no independent evidence.
    ++pictures.topicCounts[query];
    double* row = &pictures.sums[query * pictures.columns];
    for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
      for (std::size_t m = 0; m < kMeasureCount; ++m) {
        row[set * kMeasureCount + m] += experiment.results[set][topic].measures[m];
      }
    }
    for (std::size_t pair = 0; pair < experiment.comparisons.size(); ++pair) {
      const TComparison& comparison = experiment.comparisons[pair];
      // A column of its own. Both sets answer the same queries, so that their means rise and fall together: the
      // interval of the difference does not follow from those of the two means, and mostly is narrower.
      row[measureColumns + pair] += ApOf(experiment, comparison.b, topic) - ApOf(experiment, comparison.a, topic);
    }
  }
  return pictures;
}

}  // namespace

void Summarise(TExperiment& experiment, std::uint32_t seed) {
  const std::size_t setCount = experiment.sets.size();
  // A map, for tags in byte order.
  std::map<std::string, std::vector<std::size_t>> topicsOfTags;
  for (std::size_t topic = 0; topic < experiment.topics.size(); ++topic) {
    if (!experiment.topics[topic].tag.empty()) {
      topicsOfTags[experiment.topics[topic].tag].push_back(topic);
    }
  }
  for (std::size_t set = 0; set < setCount; ++set) {
    AddMeans(experiment, set, "", AllTopics(experiment));
    for (const auto& [tag, topics] : topicsOfTags) {
      AddMeans(experiment, set, tag, topics);
    }
    // Level by level over all topics: the eleven-point curve of TREC.
    TCurve curve = {};
    for (const TTopicResult& result : experiment.results[set]) {
      std::transform(curve.begin(), curve.end(), result.curve.begin(), curve.begin(), std::plus<>());
    }
    for (double& precision : curve) {
      precision /= static_cast<double>(experiment.topics.size());
    }
    experiment.curves.push_back(curve);
    for (std::size_t b = set + 1; b < setCount; ++b) {
      experiment.comparisons.push_back(Compare(experiment, set, b));
    }
  }

  const TPictureSums pictures = SumByPicture(experiment);
  const std::vector<TInterval> intervals = BootstrapIntervals(pictures, seed);
  for (TSummaryRow& row : experiment.summary) {
    if (row.tag.empty()) {
      row.interval = intervals[row.set * kMeasureCount + static_cast<std::size_t>(row.measure)];
    }
  }
  std::vector<double> p;
  for (std::size_t pair = 0; pair < experiment.comparisons.size(); ++pair) {
    const std::size_t column = setCount * kMeasureCount + pair;
    experiment.comparisons[pair].interval = intervals[column];
    std::vector<double> differences;
    // Sums and not means of a picture: one with five topics weighs five times as much, as in the difference itself.
    for (std::size_t query = 0; query < experiment.queryCount; ++query) {
      differences.push_back(pictures.sums[query * pictures.columns + column]);
    }
    p.push_back(RandomisationTest(differences, seed));
  }
  // Over all pairs of sets of this run: with ten comparisons four in ten experiments would show a "significant"
  // difference by chance at 0.05 (1 - 0.95^10 is 0.4).
  const std::vector<double> adjusted = AdjustHolm(p);
  for (std::size_t pair = 0; pair < p.size(); ++pair) {
    experiment.comparisons[pair].p = p[pair];
    experiment.comparisons[pair].pHolm = adjusted[pair];
  }
}

double MeanOf(const TExperiment& experiment, std::size_t set, TMeasure measure) {
  const auto row = std::find_if(experiment.summary.begin(), experiment.summary.end(), [&](const TSummaryRow& each) {
    return each.set == set && each.tag.empty() && each.measure == measure;
  });
  // There always is one: the rows over all topics are made for every set and measure.
  return row->mean;
}
