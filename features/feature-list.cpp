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
  // Before all plug-ins: of namesakes the first one runs, so that none of them can take the place of these two.
  features.push_back(std::make_unique<TFeatureHsv>());
  features.push_back(std::make_unique<TFeatureLbp>());
  // As the system delivers them: the order of plug-ins in the working directory, and with it which of two namesakes
  // runs, is that of the directory. Further directories are sorted, since theirs should be the same on every machine.
  for (const std::string& fileName : List(".")) {
    if (base::IsPluginFileName(fileName)) {
      LoadPlugin(fileName);
    }
  }
  for (const std::string& directory : pluginDirectories) {
    auto fileNames = List(directory);
    std::sort(fileNames.begin(), fileNames.end());
    for (const std::string& fileName : fileNames) {
      const std::string path = base::WithTrailingSeparator(base::NativePath(directory)) + fileName;
      if (base::IsPluginFileName(fileName) && !triedFiles.contains(base::CanonicalPath(path))) {
        LoadPlugin(path);
      }
    }
  }
}

std::vector<std::string> TFeatureList::List(const std::string& directory) {
  auto fileNames = base::ListDirectory(directory);
  if (!fileNames) {
    refusals.push_back(FormatString("Directory '%s' cannot be read", directory.c_str()));
    isComplete = false;
  }
  return std::move(fileNames).value_or(std::vector<std::string>());
}

void TFeatureList::LoadPlugin(const std::string& fileName) {
  // Before it is tried: what is refused once must not be refused again under another path, with a second line.
  triedFiles.insert(base::CanonicalPath(fileName));
  std::string reason;
  auto plugin = TFeaturePlugin::Load(fileName, reason);
  if (!plugin) {
    refusals.push_back(FormatString("Plug-in '%s' was left out: %s", fileName.c_str(), reason.c_str()));
    return;
  }
  // It is kept all the same: its library stays loaded, and the list says what there is. Find() gives the first.
  if (Find(plugin->GetName()) != nullptr) {
    refusals.push_back(FormatString("Plug-in '%s' never runs: there is another feature \"%s\" before it",
                                    fileName.c_str(), plugin->GetName().c_str()));
  }
  features.push_back(std::move(plugin));
}

const TFeature* TFeatureList::Find(const std::string& name) const {
  const auto found =
      std::find_if(features.begin(), features.end(), [&](const auto& feature) { return feature->GetName() == name; });
  return found == features.end() ? nullptr : found->get();
}
