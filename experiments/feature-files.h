#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "experiments/collection.h"
#include "experiments/npy-file.h"
#include "experiments/part.h"
#include "experiments/progress.h"
#include "features/feature.h"

class TDigest;

/// Features of whole pictures on disk, in a directory of their own: NAME.npy holds one row a picture, pictures.txt one
/// line a picture (name, SHA-256 of its bytes, what is wrong with it), digest.txt where each feature comes from and the
/// SHA-256 of pictures.txt. Parts have their mark in front of the ending (hsv.2-of-4.npy) and are joined as they are
/// read. What is still being written has ".unfinished" behind its name, and a second start goes on from it.

/// A feature to be computed. The feature is not owned.
struct TFeatureSource {
  const TFeature* feature;
  /// What its numbers depend on besides the picture: the program's version, or the SHA-256 of the plug-in and
  /// of the files that belong to it.
  std::string origin;
};

enum class TStepOutcome { kDone, kInterrupted, kFailed };

/// Computes the features of a part of the collection, each picture decoded once for all of them. What is there from an
/// earlier start is taken over where the picture's bytes and the feature's origin are the same. A picture that cannot
/// be decoded gets NaN in every feature. Failed, and the reason, if a file cannot be written.
TStepOutcome ExtractFeatures(const TPictureCollection& collection, const std::vector<TFeatureSource>& sources,
                             const TPart& part, const std::string& directory, TProgress& progress, std::string& reason);

/// The vectors of one feature for all pictures.
struct TFeatureRows {
  /// The number of doubles of each.
  std::size_t length = 0;
  /// Where the vector of each picture lies.
  std::vector<const double*> rows;
};

/// The features of a collection, mapped into memory.
class TFeatureTable {
 public:
  /// Opens the files of all parts. Nothing, and the reason, if a part or a feature is missing, or if they are not of
  /// these pictures and sources.
  static std::optional<TFeatureTable> Open(const TPictureCollection& collection,
                                           const std::vector<TFeatureSource>& sources, const std::string& directory,
                                           std::string& reason);

  /// In the order of the sources.
  const std::vector<TFeatureRows>& GetFeatures() const { return features; }

  std::size_t GetPictureCount() const { return damages.size(); }
  bool IsReadable(std::size_t picture) const;
  /// What is wrong with a picture; empty as a rule.
  const std::string& GetDamage(std::size_t picture) const { return damages[picture]; }

  /// SHA-256 of the names and the digests of all pictures.
  const std::string& GetDigest() const { return digest; }

  /// False if the bytes of a picture of that share have changed since; the picture's position is then in `changed`.
  bool IsCurrent(const TPictureCollection& collection, std::size_t begin, std::size_t end, std::size_t& changed) const;

 private:
  TFeatureTable() = default;

  /// Adds the rows of the next part, and its pictures to the digest of all. False, and the reason, as for Open.
  bool AddPart(const TPictureCollection& collection, const std::vector<TFeatureSource>& sources, const TPart& part,
               const std::string& directory, TDigest& collected, std::string& reason);

  std::vector<TNpyFile> files;
  std::vector<TFeatureRows> features;
  /// The vector of a picture that cannot be read, whatever the feature.
  std::vector<double> notANumber;
  std::vector<std::string> pictureDigests;
  std::vector<std::string> damages;
  std::string digest;
};

/// The number of parts of the files in a directory of features; 1 if there are none.
std::size_t CountOfFeatureParts(const std::string& directory);
