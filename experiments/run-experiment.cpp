#include "experiments/run-experiment.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/console.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "experiments/expectation.h"
#include "experiments/file-name.h"
#include "experiments/output-directory.h"
#include "experiments/plan.h"
#include "experiments/progress.h"
#include "experiments/report-concepts.h"
#include "experiments/report.h"
#include "experiments/run-reader.h"
#include "experiments/steps.h"
#include "experiments/strips.h"

namespace {

/// What --quiet does not keep back: each damage, up to a number that can be read. `ending` says where the rest is.
void PrintDamage(const TDamageList& damage, const char* ending) {
  constexpr std::size_t kMost = 20;
  for (std::size_t i = 0; i < std::min(kMost, damage.size()); ++i) {
    const TDamage& each = damage[i];
    const std::string line = each.line == 0 ? std::string() : FormatString(":%zu", each.line);
    std::fprintf(stderr, "%s%s: %s\n", each.file.c_str(), line.c_str(), each.reason.c_str());
  }
  if (!damage.empty()) {
    std::fprintf(stderr, "tessimar-experiment: %zu %s skipped%s.\n", damage.size(),
                 damage.size() == 1 ? "file or line was" : "files or lines were", ending);
  }
}

/// False if the output lies on a full disk. A reader who has seen enough, as head(1), is no failure.
bool PrintSummary(const TExperiment& experiment, const std::string& out, std::FILE* output) {
  std::string text = FormatString("%zu topics of %zu queries. Mean average precision, with its 95 percent interval:\n",
                                  experiment.topics.size(), experiment.queryCount);
  for (const TSummaryRow& row : experiment.summary) {
    // Rows of single tags have no interval and are left to the tables.
    if (row.interval && row.measure == TMeasure::kAp) {
      text += FormatString("  %-16s %.4f [%.4f, %.4f]\n", experiment.sets[row.set].c_str(), row.mean, row.interval->low,
                           row.interval->high);
    }
  }
  return base::Print(output, text + "The results are in " + out + '\n') || errno == EPIPE;
}

/// Measures how long each step took.
class TStopwatch {
 public:
  void Note(const std::string& step) {
    // A clock that is never set back.
    const auto now = std::chrono::steady_clock::now();
    table += step + FormatString("\t%.3f\n", std::chrono::duration<double>(now - begin).count());
    begin = now;
  }

  const std::string& GetTable() const { return table; }

 private:
  std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
  std::string table = "step\tseconds\n";
};

int StatusOf(const TStepResult& result) {
  switch (result.outcome) {
    // The handler of the signal has said so already.
    case TStepOutcome::kInterrupted:
      return kExperimentInterrupted;
    case TStepOutcome::kFailed:
      return RefuseExperiment(kExperimentFailed, result.reason);
    default:
      return kExperimentDone;
  }
}

/// False, and the reason, if an expectation is of a set or a measure that there is not.
bool AreKnown(const std::vector<TExpectation>& expectations, const std::vector<std::string>& sets,
              std::string& reason) {
  return std::all_of(expectations.begin(), expectations.end(), [&](const TExpectation& expectation) {
    reason = DescribeUnknown(expectation, sets);
    return reason.empty();
  });
}

/// Puts the results in their places, tells what they are, and holds them against what was expected.
int Conclude(const TExperimentOptions& options, const TExperiment& experiment, TOutputDirectory& out,
             std::FILE* output) {
  // Ctrl-C while pictures were drawn: the report would lack some.
  if (base::Interrupted()) {
    return kExperimentInterrupted;
  }
  // The results are in place before they are held against --expect, so that a miss can be looked up in them.
  if (const std::string file = out.Commit(); !file.empty()) {
    return RefuseExperiment(kExperimentFailed, FormatString("File '%s' cannot be written", file.c_str()));
  }
  if (options.classifiers.empty()) {
    // Those of an earlier experiment would stand beside tables that do not know them.
    std::remove((options.out + "concepts.tsv").c_str());
    std::remove((options.out + "segments.tsv").c_str());
  }
  PrintDamage(experiment.damage, "; damage.tsv has all");
  int status = experiment.damage.empty() ? kExperimentDone : kExperimentDamaged;
  if (!options.isQuiet && !PrintSummary(experiment, options.out, output)) {
    status = RefuseExperiment(kExperimentFailed, "Standard output cannot be written");
  }
  for (const TExpectation& expectation : options.expectations) {
    if (const std::string miss = DescribeMiss(expectation, experiment); !miss.empty()) {
      // All misses are printed, and outweigh damage.
      status = RefuseExperiment(kExperimentFailed, miss);
    }
  }
  return status;
}

/// An experiment on a collection.
class TCollectionRun {
 public:
  TCollectionRun(const TExperimentOptions& theOptions, std::FILE* theOutput)
      : options(theOptions), output(theOutput), features(theOptions.out + "features"), progress(theOptions.isQuiet) {}

  int Run() {
    std::string reason;
    // Every step makes the plan anew: steps may run on different machines, and what they agree on is checked by the
    // fingerprint and not by trust.
    plan = MakePlan(options, reason);
    if (!plan) {
      return RefuseExperiment(kExperimentUnusable, reason);
    }
    // The directory comes last: a slip in the options leaves none behind.
    if (!AreKnown(options.expectations, plan->setNames, reason) || !OpenOutputDirectory(options.out, reason)) {
      return RefuseExperiment(kExperimentUnusable, reason);
    }
    if (plan->collection.leftOut > 0 && !options.isQuiet) {
      std::fprintf(stderr, "tessimar-experiment: %zu other pictures left out: %s\n", plan->collection.leftOut,
                   plan->collection.leftOutRule);
    }
    if (options.step == TStep::kAll || options.step == TStep::kExtract) {
      if (const int status = StatusOf(Extract()); status != kExperimentDone || options.step == TStep::kExtract) {
        return status;
      }
    }
    auto table = TFeatureTable::Open(plan->collection, plan->sources, features, reason);
    if (!table) {
      return RefuseExperiment(kExperimentFailed, reason);
    }
    if (options.step == TStep::kAll || options.step == TStep::kRank) {
      if (const int status = StatusOf(Rank(*table)); status != kExperimentDone || options.step == TStep::kRank) {
        return status;
      }
    }
    return Report(*table);
  }

 private:
  TStepResult Extract() {
    TStepResult result;
    // A whole run goes on from the features that are there, in however many parts.
    const bool isWhole = options.step == TStep::kAll;
    const std::size_t first = isWhole ? 1 : options.part.number;
    const std::size_t count = isWhole ? CountOfFeatureParts(features) : options.part.count;
    const std::size_t last = isWhole ? count : first;
    for (std::size_t number = first; number <= last && result.outcome == TStepOutcome::kDone; ++number) {
      result.outcome =
          ExtractFeatures(plan->collection, plan->sources, {number, count}, features, progress, result.reason);
    }
    stopwatch.Note("extract");
    return result;
  }

  TStepResult Rank(const TFeatureTable& table) {
    // A step of its own may come days after the extraction. A part looks at its own share, so that all parts together
    // look at every picture once.
    if (options.step == TStep::kRank) {
      const auto [begin, end] = options.part.ShareOf(table.GetPictureCount());
      std::size_t changed = 0;
      if (!table.IsCurrent(plan->collection, begin, end, changed)) {
        return {TStepOutcome::kFailed, FormatString("'%s' has changed since its features were extracted; run the step "
                                                    "extract again",
                                                    plan->collection.GetPath(changed).c_str())};
      }
    }
    TStepResult result = RankQueries(options, *plan, table, progress);
    if (result.outcome == TStepOutcome::kFailed) {
      // What was skipped may be the reason.
      PrintDamage(AllDamage(*plan, table), "");
    }
    stopwatch.Note("rank");
    return result;
  }

  TStepResult Concepts(const TFeatureTable& table, TMeasuredConcepts& concepts) {
    TStepResult result;
    result.outcome = MeasureConcepts(options, *plan, table, progress, concepts, result.reason);
    stopwatch.Note("concepts");
    return result;
  }

  int Report(const TFeatureTable& table) {
    TCollected collected;
    // First, and before classifiers are taught for long: parts that do not belong together show here at once.
    if (const int status = StatusOf(CollectResults(options, *plan, table, collected)); status != kExperimentDone) {
      return status;
    }
    TMeasuredConcepts concepts;
    if (!options.classifiers.empty()) {
      if (const int status = StatusOf(Concepts(table, concepts)); status != kExperimentDone) {
        return status;
      }
      TDamageList& damage = collected.experiment.damage;
      // Concepts look at segments, and may find damage that the features of whole pictures do not show.
      damage.insert(damage.end(), concepts.damage.begin(), concepts.damage.end());
    }
    std::string reason;
    // Before anything is written: it may find that a picture has changed, and then there are no results.
    auto strips = FormatStripSection(*plan, table, collected, reason);
    if (!strips) {
      return RefuseExperiment(kExperimentFailed, reason);
    }
    const std::string runs = options.out + "runs";
    if (!base::MakeWritableDirectory(runs)) {
      return RefuseExperiment(kExperimentFailed, FormatString("Directory '%s' cannot be written", runs.c_str()));
    }
    TOutputDirectory out(options.out);
    WriteResults(options, *plan, table, collected, out);
    std::vector<TReportSection> sections = {std::move(*strips)};
    if (!options.classifiers.empty()) {
      WriteConcepts(*plan, concepts, out);
      sections.push_back(FormatConceptSection(concepts, plan->collection));
    }
    out.Add("report.html", FormatReport(collected.experiment, sections));
    stopwatch.Note("report");
    // The one file that differs between two runs of the same experiment; it stands apart for that reason.
    out.Add("times.tsv", stopwatch.GetTable());
    const int status = Conclude(options, collected.experiment, out, output);
    // Only beside the new tables. Where these could not be written the old runs belong to the old ones.
    if (out.IsCommitted()) {
      RemoveOtherRuns();
    }
    return status;
  }

  /// Runs of an earlier experiment would stand beside tables that do not know them.
  void RemoveOtherRuns() const {
    for (const std::string& name : base::ListFiles(options.out + "runs").value_or(std::vector<std::string>())) {
      // Only runs lie here: OpenOutputDirectory refuses a directory in which there is anything else.
      if (std::none_of(plan->setNames.begin(), plan->setNames.end(),
                       [&](const std::string& set) { return name == FitFileName(set, ".run"); })) {
        std::remove((options.out + "runs/" + name).c_str());
      }
    }
  }

  const TExperimentOptions& options;
  std::FILE* const output;
  const std::string features;
  TProgress progress;
  TStopwatch stopwatch;
  std::unique_ptr<TPlan> plan;
};

/// A measurement of runs that other programs wrote.
class TRunsRun {
 public:
  TRunsRun(const TExperimentOptions& theOptions, std::FILE* theOutput) : options(theOptions), output(theOutput) {}

  int Run() {
    std::string reason;
    const auto judgements = ReadJudgements(options.judgements, experiment.damage, reason);
    if (!judgements || !ReadRuns(*judgements, reason) || !AreKnown(options.expectations, experiment.sets, reason) ||
        !OpenOutputDirectory(options.out, reason)) {
      return RefuseExperiment(kExperimentUnusable, reason);
    }
    if (judgements->qids.empty()) {
      return RefuseExperiment(kExperimentFailed, FormatString("There is no topic: '%s' names no relevant document",
                                                              options.judgements.c_str()));
    }
    // Rankings of other programs get the same statistics as our own.
    Summarise(experiment, options.seed);
    stopwatch.Note("measure");
    TOutputDirectory out(options.out);
    WriteTables(experiment, out);
    out.Add("report.html", FormatReport(experiment, {}));
    out.Add("record.json", FormatRunsRecord(options, experiment));
    out.Add("times.tsv", stopwatch.GetTable());
    return Conclude(options, experiment, out, output);
  }

 private:
  bool ReadRuns(const TJudgements& judgements, std::string& reason) {
    for (std::size_t i = 0; i < judgements.qids.size(); ++i) {
      // Each topic is its own query: rankings from elsewhere do not tell which topics share a picture.
      experiment.topics.push_back({judgements.qids[i], judgements.qids[i], "", i, judgements.relevant[i].size()});
    }
    experiment.queryCount = judgements.qids.size();
    for (const std::string& path : options.runs) {
      // Without a topic no run could have a line that counts, and the run would be blamed for it. Run tells the reason.
      auto run = judgements.qids.empty() ? TMeasuredRun() : ReadRun(path, judgements, experiment.damage, reason);
      if (!run) {
        return false;
      }
      // Two rows of one name in the tables could not be told apart.
      const auto known = std::find(experiment.sets.begin(), experiment.sets.end(), run->name);
      if (known != experiment.sets.end() && !judgements.qids.empty()) {
        const auto& other = options.runs[static_cast<std::size_t>(known - experiment.sets.begin())];
        reason =
            FormatString("The runs '%s' and '%s' are both called '%s'", other.c_str(), path.c_str(), run->name.c_str());
        return false;
      }
      experiment.sets.push_back(run->name);
      experiment.results.push_back(std::move(run->results));
    }
    return true;
  }

  const TExperimentOptions& options;
  std::FILE* const output;
  TStopwatch stopwatch;
  TExperiment experiment;
};

}  // namespace

int RefuseExperiment(int status, const std::string& reason) {
  std::fprintf(stderr, "tessimar-experiment: %s\n", reason.c_str());
  return status;
}

int RunExperiment(const TExperimentOptions& options, std::FILE* output) {
  return options.runs.empty() ? TCollectionRun(options, output).Run() : TRunsRun(options, output).Run();
}
