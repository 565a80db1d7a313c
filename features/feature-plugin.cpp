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

bool TFeaturePlugin::PrepareVector(TFeatureVector& vector) const {
  // Asked before every picture: nothing in the interface says that the answer must stay the same, and the host must
  // have room for what the library is about to write.
  const std::int32_t length = exports.getFeatureLength();
  if (length < 0 || length > kMaxPluginLength) {
    return false;
  }
  vector.SetName(name);
  vector.SetLength(static_cast<std::uint32_t>(length));
  return true;
}

bool TFeaturePlugin::ProcessColor(const TImageRGB& image, TFeatureVector& vector) const {
  if (!needsColor) {
    return TFeature::ProcessColor(image, vector);
  }
  if (!PrepareVector(vector)) {
    return false;
  }
  // What the call returns is not looked at: libraries that write a vector return anything.
  exports.processColor(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), vector.GetData());
  return true;
}

bool TFeaturePlugin::ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const {
  if (needsColor || !needsGrayscale) {
    return TFeature::ProcessGrayscale(image, vector);
  }
  if (!PrepareVector(vector)) {
    return false;
  }
  exports.processGrayscale(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), vector.GetData());
  return true;
}
