#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/file.h"

class TFeatureVector;
class TFeatureVectorList;

/// The directory "FeatureStorage" of raw vector files, one for each image and feature. A file holds the doubles of one
/// vector, little-endian, and nothing else. It is tied to an image by the stem of its file name only.

constexpr const char* kFeatureDirectory = "FeatureStorage";

/// The path of the file for a feature of an image: the stem is the file name without its directory and without its last
/// full stop and what follows.
std::string StoredFeaturePath(const std::string& featureName, const std::string& imageFilename);

/// Writes the vector's numbers in place of an earlier file, which stays whole if that fails. False if it fails.
bool SaveStoredFeature(const std::string& path, const TFeatureVector& vector);

/// Reads the stored vectors of one feature, image after image.
class TStoredFeatureReader {
 public:
  /// `length` is that of the feature; nothing if it is not known.
  TStoredFeatureReader(const std::string& theFeatureName, std::optional<std::uint32_t> theLength)
      : featureName(theFeatureName), length(theLength) {}

  /// Fills the vector of the feature with the doubles of the image's file, or adds one to the list. A file that does
  /// not hold whole doubles, and as many as the feature has, is no stored vector and counts as absent. Where there is
  /// no file of exactly that name, one that differs in the case of ASCII letters serves, of several the first in byte
  /// order. Too large is a file of more than 2^24 doubles. Unless the outcome is kRead, the list is as it was.
  base::TReadOutcome Read(const std::string& imageFilename, TFeatureVectorList& features);

  /// The path of the file that was read last, or sought in vain.
  const std::string& GetPath() const { return path; }

 private:
  base::TReadOutcome ReadFile();

  std::string featureName;
  std::optional<std::uint32_t> length;
  std::string path;
  base::TFileReader reader;
  /// The names in the directory by their folded form; read when the first file is not found, since one listing costs
  /// less than a search for each image.
  std::optional<std::unordered_map<std::string, std::string>> names;
};
