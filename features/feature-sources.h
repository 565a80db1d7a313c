#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

/// From which pictures the stored files of one feature were computed, as "FeatureStorage/FEATURE.sources" keeps it: the
/// files themselves are tied to a picture by the stem of its name only, and other collections have the same stems. A
/// line a file: its name, the picture's path, size in bytes and time of change in seconds since 1970, with tabs
/// between; size and time are "-" where there was no picture to be seen.
class TFeatureSources {
 public:
  /// Reads what is known so far.
  explicit TFeatureSources(const std::string& featureName);

  /// False if there is a file which cannot be read: what it knows is not to be lost by replacing it.
  bool IsKnown() const { return isKnown; }

  const std::string& GetPath() const { return path; }

  /// Notes that the stored file was computed from the picture as it is now.
  void Note(std::string_view storedFile, const std::string& picture);

  /// True if the stored file is known to come from another picture, or from another state of this one.
  bool ComeFromOther(std::string_view storedFile, const std::string& picture) const;

  /// Replaces the file. False if it cannot be written.
  bool Save() const;

 private:
  struct TSource {
    std::string picture;
    /// Size and time, as in the file; empty if unknown.
    std::string stamp;
  };

  std::string path;
  bool isKnown = true;
  std::unordered_map<std::string, TSource> sources;
};
