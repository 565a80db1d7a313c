#pragma once

#include <string>

#include "base/file.h"

class TFeatureVector;

/// The directory "FeatureStorage" of raw vector files, one for each image and feature. A file holds the doubles of one
/// vector, little-endian, and nothing else. It is tied to an image by the stem of its file name only.

/// The path of the file for a feature of an image: the stem is the file name without its directory and without its last
/// full stop and what follows.
std::string StoredFeaturePath(const std::string& featureName, const std::string& imageFilename);

/// Writes the vector's numbers in place of an earlier file, which stays whole if that fails. False if it fails.
bool SaveStoredFeature(const std::string& path, const TFeatureVector& vector);

/// Fills the vector with the doubles of the file; bytes behind the last whole one do not count. Too large is a
/// file of more than 2^24 doubles. Unless the outcome is kRead, the vector is as it was. Its name is the caller's
/// business.
base::TReadOutcome LoadStoredFeature(base::TFileReader& reader, const std::string& path, TFeatureVector& vector);
