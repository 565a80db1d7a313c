#include "features/feature-plugin.h"

#include "images/feature-vector.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

TFeaturePlugin::TFeaturePlugin(const TPluginExports& theExports) : exports(theExports) {}

std::unique_ptr<TFeaturePlugin> TFeaturePlugin::Load(const std::string& fileName, std::string& reason) {
  const auto exports = LoadPluginExports(fileName, reason);
  if (!exports) {
    return nullptr;
  }
  std::unique_ptr<TFeaturePlugin> plugin(new TFeaturePlugin(*exports));
  plugin->file = fileName;
  reason = AskPlugin(*exports, plugin->name, plugin->needsGrayscale, plugin->needsColor);
  return reason.empty() ? std::move(plugin) : nullptr;
}

std::optional<std::uint32_t> TFeaturePlugin::GetLength() const {
  const std::int32_t answer = exports.getFeatureLength();
  return answer < 0 || answer > kMaxPluginLength ? std::nullopt : std::optional(static_cast<std::uint32_t>(answer));
}

bool TFeaturePlugin::PrepareVector(TFeatureVector& vector) const {
  // For each picture anew: the interface lets the length differ from call to call.
  const auto answer = GetLength();
  if (answer) {
    vector.SetName(name);
    // Nothing is cleared here. A plug-in has to write every element, or what memory held before goes into the vector.
    vector.SetLength(*answer);
  }
  return answer.has_value();
}

bool TFeaturePlugin::ProcessColor(const TImageRGB& image, TFeatureVector& vector) const {
  if (!needsColor) {
    return TFeature::ProcessColor(image, vector);
  }
  if (!PrepareVector(vector)) {
    return false;
  }
  // What the call returns is not looked at: libraries that write a vector return anything. The call runs in this
  // process and unguarded: a plug-in that writes beside its memory damages the program's.
  exports.processColor(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), vector.GetData());
  return true;
}

bool TFeaturePlugin::ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const {
  // A library that needs both works on color, and is never asked for this.
  if (needsColor || !needsGrayscale) {
    return TFeature::ProcessGrayscale(image, vector);
  }
  if (!PrepareVector(vector)) {
    return false;
  }
  exports.processGrayscale(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), vector.GetData());
  return true;
}
