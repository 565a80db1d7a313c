#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "features/feature.h"

/// The features of a run: "hsv", "lbp", then one for each plug-in library of the working directory, in the order in
/// which the system delivers the files, then those of further directories. The list owns them; none is added or removed
/// later.
class TFeatureList {
 public:
  /// Looks for plug-ins in the working directory, then in each of `pluginDirectories`, whose files are taken in the
  /// order of their names. There a file that was met before, directly or by a link, is passed over.
  explicit TFeatureList(const std::vector<std::string>& pluginDirectories = {});

  /// The first feature of exactly this name, or null.
  const TFeature* Find(const std::string& name) const;

  const std::vector<std::unique_ptr<TFeature>>& GetFeatures() const { return features; }

  /// False if a directory could not be read, so that plug-ins may be missing.
  bool IsComplete() const { return isComplete; }

  /// One line for each plug-in that was left out or that never runs, and for each directory that cannot be read.
  const std::vector<std::string>& GetRefusals() const { return refusals; }

 private:
  /// The names of the files in a directory; none, and a refusal, if it cannot be read.
  std::vector<std::string> List(const std::string& directory);
  void LoadPlugin(const std::string& fileName);

  std::vector<std::unique_ptr<TFeature>> features;
  std::vector<std::string> refusals;
  bool isComplete = true;
  /// The plug-ins that were met, as base::CanonicalPath names them.
  std::set<std::string> triedFiles;
};
