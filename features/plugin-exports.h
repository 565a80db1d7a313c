#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The functions of a plug-in library (sdk/feature-plugin.h is the interface); null where the library lacks one. They
/// stay valid until the program ends: no library is unloaded.
struct TPluginExports {
  using TGetText = const char*();
  /// The low byte of what the library returns. A careless one answers with more than 0 and 1.
  using TGetFlag = unsigned char();
  using TGetLength = std::int32_t();
  using TProcess = std::int32_t(const unsigned char*, std::int32_t, std::int32_t, std::int32_t, double*);

  TGetText* getDescription = nullptr;
  TGetText* getShortDescription = nullptr;
  TGetFlag* needsGrayscale = nullptr;
  TGetFlag* needsColor = nullptr;
  TGetLength* getFeatureLength = nullptr;
  TProcess* processGrayscale = nullptr;
  TProcess* processColor = nullptr;
  /// The one that a library may leave out.
  TGetText* getRefusal = nullptr;

  /// The names of those of the seven that the library lacks, in the order above.
  std::vector<std::string> missing;
};

/// The longest vector that a plug-in may ask for: 128 MiB of doubles.
constexpr std::int32_t kMaxPluginLength = 1 << 24;

/// Loads the library of that file name, relative to the working directory or absolute. Nothing, and the reason, if that
/// fails.
std::optional<TPluginExports> LoadPluginExports(const std::string& fileName, std::string& reason);

/// Why the workbench cannot work with what the plug-in says of itself; empty if it can. Calls each function that is
/// asked at most once, and copies what they say to `name` and the flags.
std::string AskPlugin(const TPluginExports& exports, std::string& name, bool& needsGrayscale, bool& needsColor);

/// The first line of a text that a plug-in gave, without control characters; empty for null.
std::string PluginText(const char* text);
