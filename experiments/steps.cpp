#include "experiments/steps.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "base/console.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "experiments/digest.h"
#include "experiments/encoding.h"
#include "experiments/file-name.h"
#include "experiments/json.h"
#include "experiments/output-directory.h"
#include "experiments/run-file.h"
#include "experiments/tables.h"

namespace {

constexpr const char* kNoTopic =
    "There is no topic: no tag is carried by a picture that can be read and may be a query, and by another picture";

/// The division stands in the name, so that parts of two divisions never overwrite each other.
std::string PartPath(const TExperimentOptions& options, const TPart& part) {
  return FormatString("%sparts/rank.%zu-of-%zu.bin", options.out.c_str(), part.number, part.count);
}

/// By query of the part: a file of rankings has no index, and its records are found by these numbers.
std::vector<std::size_t> TopicCounts(const TTopicPlan& topics, const TPart& part) {
  const auto [begin, end] = part.ShareOf(topics.queries.size());
  std::vector<std::size_t> counts;
  for (std::size_t query = begin; query < end; ++query) {
    counts.push_back(topics.tagsOfQueries[query].size());
  }
  return counts;
}

/// The number of parts that the files in DIR/parts say there are.
std::size_t CountOfRankParts(const std::string& directory) {
  std::size_t count = 1;
  for (const std::string& name : base::ListFiles(directory).value_or(std::vector<std::string>())) {
    std::size_t number = 0;
    std::size_t named = 0;
    // What is still being written ends in ".new" and does not count.
    // sscanf counts numbers and does not look at the text behind the last of them.
    if (name.ends_with(".bin") && std::sscanf(name.c_str(), "rank.%zu-of-%zu.bin", &number, &named) == 2) {
      count = std::max(count, named);
    }
  }
  return count;
}

void RemoveOtherParts(const std::string& directory, const TPart& part) {
  for (const std::string& name : base::ListFiles(directory).value_or(std::vector<std::string>())) {
    // A file .new may be another part of this division, which is being written at the moment.
    if (!name.ends_with(FormatString("-of-%zu.bin", part.count)) && !name.ends_with(".new")) {
      // Parts of another division would be joined with these: the largest number of parts found counts.
      std::remove((base::WithTrailingSeparator(directory) + name).c_str());
    }
  }
}

/// The topics in the order of the tables: tags by bytes, then pictures.
void ListTopics(const TExperimentOptions& options, const TPlan& plan, TCollected& collected) {
  const TTopicPlan& topics = collected.topics;
  for (std::size_t query = 0; query < topics.queries.size(); ++query) {
    for (std::size_t i = 0; i < topics.tagsOfQueries[query].size(); ++i) {
      collected.places.emplace_back(query, i);
    }
  }
  // As numbers, which are in the byte order of the tags.
  const auto tagOf = [&](const std::pair<std::size_t, std::size_t>& place) {
    return topics.tagsOfQueries[place.first][place.second];
  };
  // Tags are numbered in byte order, and queries stand in the order of the collection; stable keeps that within a tag.
  std::stable_sort(collected.places.begin(), collected.places.end(),
                   [&](const auto& a, const auto& b) { return tagOf(a) < tagOf(b); });
  for (const auto& place : collected.places) {
    const std::uint32_t tag = tagOf(place);
    const std::string& picture = plan.collection.names[topics.queries[place.first]];
    collected.experiment.topics.push_back({EncodeTag(topics.tags[tag]) + ":" + EncodeName(picture), picture,
                                           topics.tags[tag], place.first,
                                           topics.carriers[tag] - (options.keepsQuery ? 0 : 1)});
  }
}

void WriteRuns(const TExperimentOptions& options, const TPlan& plan, const TCollected& collected,
               const std::vector<std::string>& documents, TOutputDirectory& out) {
  const TExperiment& experiment = collected.experiment;
  // The scores of a run count down from here, also where it shows fewer ranks.
  const std::size_t ranked = documents.size() - (options.keepsQuery ? 0 : 1);
  for (std::size_t set = 0; set < plan.sets.size(); ++set) {
    base::TFileReplacement& run = out.Begin("runs/" + FitFileName(plan.setNames[set], ".run"));
    const std::string tag = EncodeSet(plan.setNames[set]);
    for (const TTopic& topic : experiment.topics) {
      const auto top = collected.GetTop(topic.query, set);
      // The parts keep up to eight ranks for the report, and --depth may ask for fewer.
      for (std::size_t i = 0; i < std::min(top.size(), options.depth); ++i) {
        run.Write(FormatRunLine(topic.qid, documents[static_cast<std::size_t>(top[i])], i + 1, ranked, tag));
      }
    }
  }
}

void WriteJudgements(const TExperimentOptions& options, const TPlan& plan, const TCollected& collected,
                     const std::vector<std::string>& documents, TOutputDirectory& out) {
  base::TFileReplacement& judgements = out.Begin("qrels.txt");
  for (const TTopic& topic : collected.experiment.topics) {
    for (const std::uint32_t picture : plan.truth.carriers.at(topic.tag)) {
      if (options.keepsQuery || picture != collected.topics.queries[topic.query]) {
        // Relevant documents only: what a file of judgements does not name counts as not relevant.
        judgements.Write(FormatJudgement(topic.qid, documents[picture]));
      }
    }
  }
}

std::vector<std::string> TextsOf(const std::vector<TExpectation>& expectations) {
  std::vector<std::string> texts;
  texts.reserve(expectations.size());
  for (const TExpectation& each : expectations) {
    texts.push_back(each.text);
  }
  return texts;
}

std::string FormatRecord(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                         const TExperiment& experiment) {
  TJsonWriter json;
  json.Add("program", options.version);
  // No date, no machine, and none of --out, --quiet, --step and --part: a record is the same however the work was
  // divided.
  json.BeginObject("options");
  json.Add("collection", options.collection);
  json.Add("classes", options.hasClasses);
  // Paths as they were given: they say what was asked for, and the digests below say what was there.
  json.Add("truth", options.truth);
  json.Add("features", plan.setNames);
  json.Add("plugins", options.plugins);
  json.Add("queries", options.queries);
  json.Add("keep-query", options.keepsQuery);
  json.Add("depth", options.depth);
  json.Add("concepts", options.classifiers);
  json.Add("segments", options.segments);
  json.Add("seed", std::size_t{options.seed});
  json.Add("expect", TextsOf(options.expectations));
  json.EndObject();
  json.BeginObject("sha256");
  json.Add("collection", table.GetDigest());
  json.Add("truth", plan.truth.digest);
  json.BeginObject("plugins");
  for (const TUsedPlugin& plugin : plan.plugins) {
    json.Add(plugin.fileName, plugin.digest);
  }
  json.EndObject();
  json.EndObject();
  json.BeginObject("counts");
  json.Add("pictures", plan.collection.names.size());
  json.Add("tags", plan.truth.carriers.size());
  json.Add("queries", experiment.queryCount);
  json.Add("topics", experiment.topics.size());
  json.Add("damage", experiment.damage.size());
  json.EndObject();
  return json.Finish();
}

}  // namespace

TStepResult RankQueries(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                        TProgress& progress) {
  const TTopicPlan topics = MakeTopics(plan, table);
  // Told before hours of ranking, and with the reason.
  if (topics.queries.empty()) {
    return {TStepOutcome::kFailed, kNoTopic};
  }
  const std::string directory = options.out + "parts";
  if (!base::MakeWritableDirectory(directory)) {
    return {TStepOutcome::kFailed, FormatString("Directory '%s' cannot be written", directory.c_str())};
  }
  const std::string path = PartPath(options, options.part);
  // Written beside an earlier part of that name, which stays good until this one is whole.
  TRankFileWriter writer(path, MakeFingerprint(options, plan, table));
  TDistanceWork distances(table, plan.sets);
  TRanker ranker(topics.tagsOfPictures, topics.tags.size(), options.keepsQuery, CountOfTop(options, plan));
  const auto [begin, end] = options.part.ShareOf(topics.queries.size());
  const std::vector<std::size_t> topicCounts = TopicCounts(topics, options.part);
  progress.Begin("Topics:", std::accumulate(topicCounts.begin(), topicCounts.end(), std::size_t{0}));
  const std::size_t pictureCount = table.GetPictureCount();
  // Queries in blocks: each vector of the collection is read from memory once a block. The results do not depend on the
  // size of the blocks.
  for (std::size_t first = begin; first < end; first += distances.GetQueriesAtATime()) {
    const std::size_t count = std::min(distances.GetQueriesAtATime(), end - first);
    const std::span<const std::uint32_t> queries = std::span(topics.queries).subspan(first, count);
    // The distances come set by set, the file wants them query by query.
    std::vector<TQueryRanking> rankings(count * plan.sets.size());
    distances.Run(queries, [&](std::size_t set, std::span<double> rows) {
      for (std::size_t i = 0; i < count; ++i) {
        rankings[i * plan.sets.size() + set] =
            ranker.Rank(rows.subspan(i * pictureCount, pictureCount), queries[i], topics.tagsOfQueries[first + i]);
      }
    });
    for (const TQueryRanking& ranking : rankings) {
      writer.Add(ranking);
    }
    // Between blocks only, some seconds apart. The part is not renamed, so that nothing half done is left in its place.
    if (base::Interrupted()) {
      return {TStepOutcome::kInterrupted, ""};
    }
    const auto counted = topicCounts.begin() + static_cast<std::ptrdiff_t>(first - begin);
    progress.Advance(std::accumulate(counted, counted + static_cast<std::ptrdiff_t>(count), std::size_t{0}));
  }
  progress.End();
  if (!writer.Finish()) {
    return {TStepOutcome::kFailed, FormatString("File '%s' cannot be written", path.c_str())};
  }
  RemoveOtherParts(directory, options.part);
  return {};
}

std::span<const std::int32_t> TCollected::GetTop(std::size_t query, std::size_t set) const {
  // The parts hold all queries, in order.
  std::size_t i = 0;
  while (query >= parts[i].ShareOf(topics.queries.size()).second) {
    ++i;
  }
  return files[i].GetTop(query - parts[i].ShareOf(topics.queries.size()).first, set);
}

TStepResult CollectResults(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                           TCollected& collected) {
  collected.topics = MakeTopics(plan, table);
  const TTopicPlan& topics = collected.topics;
  if (topics.queries.empty()) {
    return {TStepOutcome::kFailed, kNoTopic};
  }
  TExperiment& experiment = collected.experiment;
  const TFingerprint fingerprint = MakeFingerprint(options, plan, table);
  const std::size_t partCount = CountOfRankParts(options.out + "parts");
  for (std::size_t number = 1; number <= partCount; ++number) {
    const TPart part = {number, partCount};
    std::string reason;
    auto file = TRankFile::Open(PartPath(options, part), fingerprint, TopicCounts(topics, part), plan.sets.size(),
                                CountOfTop(options, plan), reason);
    if (!file) {
      return {TStepOutcome::kFailed, FormatString("The part %zu of %zu of the rankings ('%s') %s", number, partCount,
                                                  PartPath(options, part).c_str(), reason.c_str())};
    }
    collected.parts.push_back(part);
    collected.files.push_back(std::move(*file));
  }
  ListTopics(options, plan, collected);
  experiment.sets = plan.setNames;
  experiment.queryCount = topics.queries.size();
  experiment.damage = AllDamage(plan, table);
  experiment.results.resize(plan.sets.size());
  for (std::size_t set = 0; set < plan.sets.size(); ++set) {
    // By query: the results of its topics.
    std::vector<std::span<const TTopicResult>> results;
    for (std::size_t i = 0; i < collected.files.size(); ++i) {
      const auto [begin, end] = collected.parts[i].ShareOf(topics.queries.size());
      for (std::size_t query = begin; query < end; ++query) {
        results.push_back(collected.files[i].GetResults(query - begin, set));
      }
    }
    for (const auto& [query, tag] : collected.places) {
      experiment.results[set].push_back(results[query][tag]);
    }
  }
  Summarise(experiment, options.seed);
  return {};
}

TDamageList AllDamage(const TPlan& plan, const TFeatureTable& table) {
  TDamageList damage;
  for (std::size_t picture = 0; picture < table.GetPictureCount(); ++picture) {
    if (!table.GetDamage(picture).empty()) {
      damage.push_back({plan.collection.names[picture], 0, table.GetDamage(picture)});
    }
  }
  // Pictures first, in the order of the collection, since most users look for these.
  damage.insert(damage.end(), plan.damage.begin(), plan.damage.end());
  return damage;
}

void WriteResults(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                  const TCollected& collected, TOutputDirectory& out) {
  std::vector<std::string> documents;
  for (const std::string& name : plan.collection.names) {
    // Once for all runs: a name stands in thousands of lines.
    documents.push_back(EncodeName(name));
  }
  WriteRuns(options, plan, collected, documents, out);
  WriteJudgements(options, plan, collected, documents, out);
  WriteTables(collected.experiment, out);
  out.Add("record.json", FormatRecord(options, plan, table, collected.experiment));
}

void WriteConcepts(const TPlan& plan, const TMeasuredConcepts& measured, TOutputDirectory& out) {
  out.Add("concepts.tsv", FormatConcepts(measured));
  base::TFileReplacement& segments = out.Begin("segments.tsv");
  segments.Write(FormatSegmentsHeading());
  for (const TMeasuredConcept& each : measured.concepts) {
    segments.Write(FormatSegments(each, plan.collection.names));
  }
}

void WriteTables(const TExperiment& experiment, TOutputDirectory& out) {
  base::TFileReplacement& topics = out.Begin("topics.tsv");
  topics.Write(FormatTopicsHeading());
  for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
    topics.Write(FormatTopics(experiment, set));
  }
  // The small tables at once, the large ones piece by piece: those may have millions of rows.
  out.Add("summary.tsv", FormatSummary(experiment));
  out.Add("comparison.tsv", FormatComparisons(experiment));
  out.Add("curves.tsv", FormatCurves(experiment));
  out.Add("damage.tsv", FormatDamage(experiment.damage));
}

std::string FormatRunsRecord(const TExperimentOptions& options, const TExperiment& experiment) {
  TJsonWriter json;
  json.Add("program", options.version);
  json.BeginObject("options");
  json.Add("measure", options.runs);
  json.Add("qrels", options.judgements);
  json.Add("seed", std::size_t{options.seed});
  json.Add("expect", TextsOf(options.expectations));
  json.EndObject();
  json.BeginObject("sha256");
  // The bytes of what was measured: a record without them could not be checked.
  for (const std::string& run : options.runs) {
    // Read a second time: of a file that changed while it was measured this is the later state, and of one that has
    // gone it is empty.
    json.Add(run, DigestOfFile(base::NativePath(run)).value_or(""));
  }
  json.Add(options.judgements, DigestOfFile(base::NativePath(options.judgements)).value_or(""));
  json.EndObject();
  json.BeginObject("counts");
  json.Add("topics", experiment.topics.size());
  json.Add("damage", experiment.damage.size());
  json.EndObject();
  return json.Finish();
}
