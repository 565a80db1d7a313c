#include "experiments/plan.h"

#include <algorithm>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "experiments/digest.h"
#include "experiments/encoding.h"
#include "features/feature-plugin.h"

namespace {

/// The names of the features of a set: what stands between plus signs.
std::vector<std::string> SplitSet(const std::string& set) {
  // At every plus sign. A plug-in may have one in its name; --features cannot name that feature, but without the option
  // it has its set.
  std::vector<std::string> names;
  std::size_t start = 0;
  for (std::size_t plus = set.find('+'); plus != std::string::npos; plus = set.find('+', start)) {
    names.push_back(set.substr(start, plus - start));
    start = plus + 1;
  }
  names.push_back(set.substr(start));
  return names;
}

/// The features of each set by name.
std::vector<std::vector<std::string>> SetsOf(const TExperimentOptions& options, TPlan& plan) {
  std::vector<std::vector<std::string>> sets;
  plan.setNames = options.features;
  for (const std::string& set : options.features) {
    sets.push_back(SplitSet(set));
  }
  if (sets.empty()) {
    std::vector<std::string> all;
    for (const auto& feature : plan.featureList.GetFeatures()) {
      // A name that came before hides its later namesakes.
      if (plan.featureList.Find(feature->GetName()) == feature.get()) {
        all.push_back(feature->GetName());
        // Each feature alone, in the order of the program's list, and then all of them together.
        sets.push_back({feature->GetName()});
      }
    }
    sets.push_back(all);
    for (const auto& set : sets) {
      plan.setNames.push_back(base::Join(set, "+"));
    }
  }
  return sets;
}

/// The origin of a feature's numbers; nothing, and the reason, if its library cannot be read.
std::optional<std::string> OriginOf(const TFeature& feature, const std::string& version, TPlan& plan,
                                    std::string& reason) {
  const auto* plugin = dynamic_cast<const TFeaturePlugin*>(&feature);
  if (plugin == nullptr) {
    return version;
  }
  // Two builds of a plug-in may give different numbers under one name and version; only the bytes of the library tell
  // them apart.
  auto digest = DigestOfFile(plugin->GetFile());
  if (!digest) {
    reason = FormatString("Plug-in '%s' cannot be read", plugin->GetFile().c_str());
    return std::nullopt;
  }
  const std::string_view library = base::FileNameOf(plugin->GetFile());
  const std::string directory = plugin->GetFile().substr(0, plugin->GetFile().size() - library.size());
  plan.plugins.push_back({feature.GetName(), std::string(library), *digest});
  // What a plug-in reads beside its library, such as the network of "embedding", decides its numbers too. It is known
  // by its name, which begins like that of the feature.
  std::string origin = *digest;
  auto names = base::ListFiles(directory.empty() ? "." : directory).value_or(std::vector<std::string>());
  std::erase_if(names, [&](const std::string& name) { return !name.starts_with(feature.GetName() + "."); });
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    digest = DigestOfFile(directory + name);
    if (!digest) {
      reason = FormatString("File '%s' of a plug-in cannot be read", (directory + name).c_str());
      return std::nullopt;
    }
    plan.plugins.push_back({feature.GetName(), name, *digest});
    origin += *digest;
  }
  // The library's own where it stands alone, so that record.json and the stored features agree on it.
  return names.empty() ? origin : DigestOf(origin);
}

bool ResolveSets(const TExperimentOptions& options, TPlan& plan, std::string& reason) {
  const auto sets = SetsOf(options, plan);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const std::string& setName = plan.setNames[i];
    if (std::find(plan.setNames.begin(), plan.setNames.begin() + static_cast<std::ptrdiff_t>(i), setName) !=
        plan.setNames.begin() + static_cast<std::ptrdiff_t>(i)) {
      reason = FormatString("The set '%s' stands twice in --features", setName.c_str());
      return false;
    }
    for (std::size_t k = 0; k < sets[i].size(); ++k) {
      const std::string& name = sets[i][k];
      if (plan.featureList.Find(name) == nullptr) {
        reason =
            FormatString("There is no feature '%s' (in the set '%s' of --features)", name.c_str(), setName.c_str());
        return false;
      }
      const auto end = sets[i].begin() + static_cast<std::ptrdiff_t>(k);
      if (std::find(sets[i].begin(), end, name) != end) {
        reason =
            FormatString("The feature '%s' stands twice in the set '%s' of --features", name.c_str(), setName.c_str());
        return false;
      }
    }
  }
  for (const auto& feature : plan.featureList.GetFeatures()) {
    // Every feature once, however many sets use it, and none that no set uses: extraction is what takes the time.
    const bool isUsed = plan.featureList.Find(feature->GetName()) == feature.get() &&
                        std::any_of(sets.begin(), sets.end(), [&](const std::vector<std::string>& names) {
                          return std::find(names.begin(), names.end(), feature->GetName()) != names.end();
                        });
    if (isUsed) {
      const auto origin = OriginOf(*feature, options.version, plan, reason);
      if (!origin) {
        return false;
      }
      plan.sources.push_back({feature.get(), *origin});
    }
  }
  for (const auto& names : sets) {
    TFeatureSet& set = plan.sets.emplace_back();
    for (const std::string& name : names) {
      const auto source = std::find_if(plan.sources.begin(), plan.sources.end(),
                                       [&](const TFeatureSource& each) { return each.feature->GetName() == name; });
      // In the order of the set's name, by which the sums are formed: "a+b" and "b+a" may differ in their last bits.
      set.push_back(static_cast<std::size_t>(source - plan.sources.begin()));
    }
  }
  return true;
}

/// Plug-ins that do not take part though they are there.
void NotePlugins(TPlan& plan) {
  for (const std::string& refusal : plan.featureList.GetRefusals()) {
    // A refusal names the file between its first quotes.
    const std::size_t begin = refusal.find('\'') + 1;
    plan.damage.push_back({refusal.substr(begin, refusal.find('\'', begin) - begin), 0, refusal});
  }
}

}  // namespace

std::unique_ptr<TPlan> MakePlan(const TExperimentOptions& options, std::string& reason) {
  for (const std::string& directory : options.plugins) {
    if (!base::IsDirectory(directory)) {
      reason = FormatString("Directory '%s' of --plugins cannot be read", directory.c_str());
      return nullptr;
    }
  }
  auto plan = std::make_unique<TPlan>(options.plugins);
  NotePlugins(*plan);
  auto collection =
      options.hasClasses ? ReadClasses(options.collection, reason) : ReadCollection(options.collection, reason);
  if (!collection || !ResolveSets(options, *plan, reason)) {
    return nullptr;
  }
  plan->collection = std::move(*collection);
  auto truth = ReadTruth(plan->collection, options.truth, plan->damage, reason);
  if (!truth) {
    return nullptr;
  }
  plan->truth = std::move(*truth);
  if (!options.queries.empty()) {
    plan->queries = ReadQueries(plan->collection, options.queries, plan->damage, reason);
    if (!plan->queries) {
      return nullptr;
    }
  }
  return plan;
}

TTopicPlan MakeTopics(const TPlan& plan, const TFeatureTable& table) {
  TTopicPlan topics;
  topics.tagsOfPictures.resize(plan.collection.names.size());
  // Tags in byte order, so that those of a picture ascend without a sort.
  for (const auto& [tag, pictures] : plan.truth.carriers) {
    for (const std::uint32_t picture : pictures) {
      topics.tagsOfPictures[picture].push_back(static_cast<std::uint32_t>(topics.tags.size()));
    }
    topics.tags.push_back(tag);
    // All of them, those that cannot be read included: they stay in the rankings, at the end, and are relevant there.
    topics.carriers.push_back(pictures.size());
  }
  for (std::uint32_t picture = 0; picture < topics.tagsOfPictures.size(); ++picture) {
    if (!table.IsReadable(picture) ||
        (plan.queries && !std::binary_search(plan.queries->begin(), plan.queries->end(), picture))) {
      continue;
    }
    std::vector<std::uint32_t> tags = topics.tagsOfPictures[picture];
    // The query itself is not relevant to its own topic: another picture has to be.
    std::erase_if(tags, [&](std::uint32_t tag) { return topics.carriers[tag] < 2; });
    if (!tags.empty()) {
      topics.queries.push_back(picture);
      topics.tagsOfQueries.push_back(std::move(tags));
    }
  }
  return topics;
}

TFingerprint MakeFingerprint(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table) {
  std::vector<std::string> origins;
  for (const TFeatureSource& source : plan.sources) {
    origins.push_back(EncodeField(source.feature->GetName()) + " " + source.origin);
  }
  std::vector<std::string> queries;
  for (const std::uint32_t query : plan.queries.value_or(std::vector<std::uint32_t>())) {
    // Positions, since the digest of the collection says which picture stands where.
    queries.push_back(std::to_string(query));
  }
  // What decides the contents of a part. The names are read by people: they end the sentence "was made with another
  // ...".
  return {{"collection", table.GetDigest()},
          {"truth", plan.truth.digest},
          {"list of features", EncodeField(base::Join(plan.setNames, ","))},
          {"version of a feature", base::Join(origins, ",")},
          {"choice of queries", plan.queries ? DigestOf(base::Join(queries, "\n")) : "all"},
          {"--keep-query", options.keepsQuery ? "yes" : "no"},
          {"--depth", std::to_string(options.depth)},
          {"seed", std::to_string(options.seed)}};
}

std::size_t CountOfTop(const TExperimentOptions& options, const TPlan& plan) {
  // The pictures of a strip in the report, which are drawn even where the runs show fewer ranks.
  constexpr std::size_t kDrawn = 8;
  // Not below 0: a collection without pictures is refused.
  const std::size_t ranks = plan.collection.names.size() - (options.keepsQuery ? 0 : 1);
  return std::min(std::max(options.depth, kDrawn), ranks);
}
