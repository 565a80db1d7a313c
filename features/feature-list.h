#pragma once

#include <memory>
#include <string>
#include <vector>

#include "features/feature.h"

/// The features of a run: "hsv", "lbp", then one for each plug-in library of the working directory, in the order in
/// which the system delivers the files, and of further directories, in byte order. The list owns them; none is added or
/// removed later.
class TFeatureList {
 public:
  explicit TFeatureList(const std::vector<std::string>& pluginDirectories = {});

  /// The first feature of exactly this name, or null.
  const TFeature* Find(const std::string& name) const;

  const std::vector<std::unique_ptr<TFeature>>& GetFeatures() const { return features; }

  /// One line for each plug-in that was left out, naming file and reason.
  const std::vector<std::string>& GetRefusals() const { return refusals; }

 private:
  void AddPlugin(const std::string& fileName);

  std::vector<std::unique_ptr<TFeature>> features;
  std::vector<std::string> refusals;
};
