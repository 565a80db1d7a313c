#include "features/feature-plugin.h"

#include <algorithm>
#include <string_view>

#include <QLibrary>

#include "base/plugin-library.h"
#include "images/feature-vector.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

/// The longest vector that a plug-in may ask for: 128 MiB of doubles.
constexpr std::int32_t kMaxLength = 1 << 24;

/// True for a name that a user can type (the parser folds capitals and cuts at the others) and that fits a file name.
bool IsUsableName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char character) {
    const bool isCapital = character >= 'A' && character <= 'Z';
    const bool isControl = static_cast<unsigned char>(character) < ' ' || character == '\x7f';
    return !isCapital && !isControl && std::string_view("/\\\",=)").find(character) == std::string_view::npos;
  });
}

/// Looks a function up, and notes its name in `reason` if the library lacks it.
template <typename TPointer>
void Resolve(QLibrary& library, const char* symbol, TPointer& function, std::string& reason) {
  function = reinterpret_cast<TPointer>(library.resolve(symbol));
  if (function == nullptr && reason.empty()) {
    reason = std::string("it does not export ") + symbol;
  }
}

}  // namespace

std::unique_ptr<TFeaturePlugin> TFeaturePlugin::Load(const std::string& fileName, std::string& reason) {
  QLibrary library(QString::fromStdString(base::PluginLoadPath(fileName)));
  if (!library.load()) {
    reason = library.errorString().toStdString();
    return nullptr;
  }
  std::unique_ptr<TFeaturePlugin> plugin(new TFeaturePlugin());
  plugin->file = fileName;
  reason.clear();
  Resolve(library, "GetShortDescription", plugin->getShortDescription, reason);
  Resolve(library, "NeedsGrayscale", plugin->askNeedsGrayscale, reason);
  Resolve(library, "NeedsColor", plugin->askNeedsColor, reason);
  Resolve(library, "GetFeatureLength", plugin->getFeatureLength, reason);
  if (!reason.empty()) {
    return nullptr;
  }
  const char* text = plugin->getShortDescription();
  plugin->name = text == nullptr ? "" : text;
  if (!IsUsableName(plugin->name)) {
    reason = "its name \"" + plugin->name + "\" is empty or cannot be typed";
    return nullptr;
  }
  plugin->needsGrayscale = plugin->askNeedsGrayscale() != 0;
  plugin->needsColor = plugin->askNeedsColor() != 0;
  if (plugin->needsColor) {
    Resolve(library, "ProcessColor", plugin->processColor, reason);
  } else if (plugin->needsGrayscale) {
    Resolve(library, "ProcessGrayscale", plugin->processGrayscale, reason);
  } else {
    reason = "it needs neither colour nor gray";
  }
  return reason.empty() ? std::move(plugin) : nullptr;
}

bool TFeaturePlugin::PrepareVector(TFeatureVector& vector) const {
  const std::int32_t length = getFeatureLength();
  if (length < 0 || length > kMaxLength) {
    return false;
  }
  vector.SetName(name);
  vector.SetLength(static_cast<std::uint32_t>(length));
  return true;
}

bool TFeaturePlugin::ProcessColor(const TImageRGB& image, TFeatureVector& vector) const {
  if (processColor == nullptr) {
    return TFeature::ProcessColor(image, vector);
  }
  if (!PrepareVector(vector)) {
    return false;
  }
  processColor(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), vector.GetData());
  return true;
}

bool TFeaturePlugin::ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const {
  if (processGrayscale == nullptr) {
    return TFeature::ProcessGrayscale(image, vector);
  }
  if (!PrepareVector(vector)) {
    return false;
  }
  processGrayscale(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), vector.GetData());
  return true;
}
