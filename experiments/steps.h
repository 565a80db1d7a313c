#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "experiments/concept-measures.h"
#include "experiments/experiment.h"
#include "experiments/feature-files.h"
#include "experiments/options.h"
#include "experiments/plan.h"
#include "experiments/progress.h"
#include "experiments/rank-file.h"

class TOutputDirectory;

/// How a step ended, and why it failed.
struct TStepResult {
  TStepOutcome outcome = TStepOutcome::kDone;
  std::string reason;
};

/// Ranks a part of the queries and leaves results and rankings in DIR/parts/.
TStepResult RankQueries(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                        TProgress& progress);

/// The results of all parts, and the rankings that they come from.
struct TCollected {
  TTopicPlan topics;
  TExperiment experiment;
  /// The query and its tag of each topic, as positions in `topics`.
  std::vector<std::pair<std::size_t, std::size_t>> places;
  std::vector<TPart> parts;
  std::vector<TRankFile> files;

  /// The pictures of the first ranks for a query (a position in topics.queries), as positions in the collection.
  std::span<const std::int32_t> GetTop(std::size_t query, std::size_t set) const;
};

/// Joins all parts of the rankings and works out the statistics. Failed, and the reason, if a part is missing or was
/// made from something else, or if there is no topic.
TStepResult CollectResults(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                           TCollected& collected);

/// What was not used: pictures in the order of the collection, then what the plan found.
TDamageList AllDamage(const TPlan& plan, const TFeatureTable& table);

/// Adds runs/, qrels.txt, the tables and record.json to the files of the directory.
void WriteResults(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                  const TCollected& collected, TOutputDirectory& out);

/// Adds concepts.tsv and segments.tsv.
void WriteConcepts(const TPlan& plan, const TMeasuredConcepts& measured, TOutputDirectory& out);

/// Adds the tables alone.
void WriteTables(const TExperiment& experiment, TOutputDirectory& out);

/// The record of a measurement of other programs' runs.
std::string FormatRunsRecord(const TExperimentOptions& options, const TExperiment& experiment);
