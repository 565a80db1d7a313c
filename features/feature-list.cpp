#include "features/feature-list.h"

#include <algorithm>
#include <utility>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/plugin-library.h"
#include "features/feature-hsv.h"
#include "features/feature-lbp.h"
#include "features/feature-plugin.h"

TFeatureList::TFeatureList(const std::vector<std::string>& pluginDirectories) {
  features.push_back(std::make_unique<TFeatureHsv>());
  features.push_back(std::make_unique<TFeatureLbp>());
  for (const std::string& fileName : base::ListDirectory(".").value_or(std::vector<std::string>())) {
    if (base::IsPluginFileName(fileName)) {
      AddPlugin(fileName);
    }
  }
  for (const std::string& directory : pluginDirectories) {
    std::vector<std::string> fileNames = base::ListDirectory(directory).value_or(std::vector<std::string>());
    std::sort(fileNames.begin(), fileNames.end());
    for (const std::string& fileName : fileNames) {
      if (base::IsPluginFileName(fileName)) {
        AddPlugin(base::WithTrailingSeparator(base::NativePath(directory)) + fileName);
      }
    }
  }
}

void TFeatureList::AddPlugin(const std::string& fileName) {
  std::string reason;
  if (auto plugin = TFeaturePlugin::Load(fileName, reason)) {
    features.push_back(std::move(plugin));
  } else {
    refusals.push_back(FormatString("Plug-in '%s' was left out: %s", fileName.c_str(), reason.c_str()));
  }
}

const TFeature* TFeatureList::Find(const std::string& name) const {
  const auto found =
      std::find_if(features.begin(), features.end(), [&](const auto& feature) { return feature->GetName() == name; });
  return found == features.end() ? nullptr : found->get();
}
