#include "features/plugin-exports.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include <QLibrary>

#include "base/plugin-library.h"

namespace {

bool IsControl(char character) {
  // Bytes above 127 are parts of UTF-8 characters, and negative where char has a sign.
  return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

/// True for a name that a user can type (the parser folds capitals and cuts at the others) and that fits a file name.
bool IsUsableName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char character) {
    const bool isCapital = character >= 'A' && character <= 'Z';
    // A capital would be folded away and never match; the others end a name in the command line, and the slashes would
    // lead into other directories where the name becomes part of a file name.
    return !isCapital && !IsControl(character) &&
           std::string_view("/\\\",=)").find(character) == std::string_view::npos;
  });
}

template <typename TPointer>
void Resolve(QLibrary& library, const char* symbol, TPointer& function, std::vector<std::string>& missing) {
  function = reinterpret_cast<TPointer>(library.resolve(symbol));
  if (function == nullptr) {
    missing.emplace_back(symbol);
  }
}

/// Names the first of the functions that the library lacks; empty if it has them all.
std::string WhyMissing(const TPluginExports& exports, std::initializer_list<const char*> symbols) {
  for (const char* symbol : symbols) {
    if (std::find(exports.missing.begin(), exports.missing.end(), symbol) != exports.missing.end()) {
      return std::string("it does not export ") + symbol;
    }
  }
  return {};
}

}  // namespace

std::optional<TPluginExports> LoadPluginExports(const std::string& fileName, std::string& reason) {
  reason = base::WhyNoPlugin(fileName);
  if (!reason.empty()) {
    return std::nullopt;
  }
  // The object goes and the library stays: QLibrary unloads only when asked to. Its code may have started threads or
  // left handlers behind.
  QLibrary library(QString::fromStdString(base::PluginLoadPath(fileName)));
  if (!library.load()) {
    reason = library.errorString().toStdString();
    return std::nullopt;
  }
  TPluginExports exports;
  Resolve(library, "GetDescription", exports.getDescription, exports.missing);
  Resolve(library, "GetShortDescription", exports.getShortDescription, exports.missing);
  Resolve(library, "NeedsGrayscale", exports.needsGrayscale, exports.missing);
  Resolve(library, "NeedsColor", exports.needsColor, exports.missing);
  Resolve(library, "GetFeatureLength", exports.getFeatureLength, exports.missing);
  Resolve(library, "ProcessGrayscale", exports.processGrayscale, exports.missing);
  Resolve(library, "ProcessColor", exports.processColor, exports.missing);
  // Not among the seven: libraries without it work.
  exports.getRefusal = reinterpret_cast<TPluginExports::TGetText*>(library.resolve("GetRefusal"));
  return exports;
}

std::string AskPlugin(const TPluginExports& exports, std::string& name, bool& needsGrayscale, bool& needsColor) {
  if (exports.getRefusal != nullptr) {
    // First of all, since a library that refuses to work need not answer anything else sensibly.
    std::string refusal = PluginText(exports.getRefusal());
    if (!refusal.empty()) {
      return refusal;
    }
  }
  std::string missing =
      WhyMissing(exports, {"GetShortDescription", "NeedsGrayscale", "NeedsColor", "GetFeatureLength"});
  if (!missing.empty()) {
    return missing;
  }
  const char* text = exports.getShortDescription();
  name = text == nullptr ? "" : text;
  if (!IsUsableName(name)) {
    return "its name \"" + name + "\" is empty or cannot be typed";
  }
  needsGrayscale = exports.needsGrayscale() != 0;
  needsColor = exports.needsColor() != 0;
  if (!needsColor && !needsGrayscale) {
    return "it needs neither color nor gray";
  }
  return WhyMissing(exports, {needsColor ? "ProcessColor" : "ProcessGrayscale"});
}

std::string PluginText(const char* text) {
  std::string line(text == nullptr ? "" : text);
  line.erase(std::find(line.begin(), line.end(), '\n'), line.end());
  line.erase(std::remove_if(line.begin(), line.end(), IsControl), line.end());
  return line;
}
