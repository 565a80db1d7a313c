#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "experiments/collection.h"
#include "experiments/damage.h"
#include "experiments/distances.h"
#include "experiments/experiment.h"
#include "experiments/feature-files.h"
#include "experiments/options.h"
#include "experiments/rank-file.h"
#include "experiments/truth.h"
#include "features/feature-list.h"

/// The library of a plug-in that takes part, or a file beside it that belongs to it.
struct TUsedPlugin {
  std::string feature;
  std::string fileName;
  std::string digest;
};

/// What an experiment works on; every step makes the same one from the same options.
struct TPlan {
  TPictureCollection collection;
  TTruth truth;
  /// The pictures that may be queries, ascending; nothing: all.
  std::optional<std::vector<std::uint32_t>> queries;
  TFeatureList featureList;
  /// The features that the sets use, in the order of the list.
  std::vector<TFeatureSource> sources;
  std::vector<TUsedPlugin> plugins;
  std::vector<std::string> setNames;
  /// By positions in `sources`.
  std::vector<TFeatureSet> sets;
  /// Of truth and queries.
  TDamageList damage;

  explicit TPlan(const std::vector<std::string>& pluginDirectories) : featureList(pluginDirectories) {}
};

/// Null, and the reason, if the options do not fit what is there.
std::unique_ptr<TPlan> MakePlan(const TExperimentOptions& options, std::string& reason);

/// The topics of a plan, once it is known which pictures can be read.
struct TTopicPlan {
  std::vector<std::string> tags;
  /// The tags of each picture, as positions in `tags`, ascending.
  std::vector<std::vector<std::uint32_t>> tagsOfPictures;
  std::vector<std::size_t> carriers;
  /// The pictures that have a topic, ascending, and the tags of the topics of each.
  std::vector<std::uint32_t> queries;
  std::vector<std::vector<std::uint32_t>> tagsOfQueries;
};

/// One for each tag and each picture that carries it, can be read and may be a query, if another picture carries the
/// tag.
TTopicPlan MakeTopics(const TPlan& plan, const TFeatureTable& table);

/// What the rankings of a plan depend on.
TFingerprint MakeFingerprint(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table);

/// The number of ranks that a part keeps of each ranking: what the runs show, and what the report draws.
std::size_t CountOfTop(const TExperimentOptions& options, const TPlan& plan);
