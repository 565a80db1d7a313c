#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "experiments/damage.h"
#include "experiments/feature-files.h"
#include "experiments/options.h"
#include "experiments/plan.h"
#include "experiments/progress.h"

/// What a classifier says of a segment.
struct TAskedSegment {
  /// In pixels of the picture, from its top left corner.
  int x;
  int y;
  int width;
  int height;
  /// TClassifier::Score; 0 where numbers overflow on the way to it.
  double score;
  /// True if TClassifier::Classify is above 0.
  bool isPositive;
};

struct TAskedPicture {
  /// A position in the collection.
  std::uint32_t picture;
  bool isCarrier;
  /// In pixels.
  int width;
  int height;
  /// All that have usable features, at least one.
  std::vector<TAskedSegment> segments;

  /// The share of the segments that are positive.
  double GetFraction() const;
  double GetMeanScore() const;
  /// The positive segments of a carrier, and the others of any other picture.
  std::size_t CountRight() const;
};

/// Segments by whether they are positive, and whether they are of a carrier.
struct TSegmentCounts {
  std::size_t truePositives = 0;
  std::size_t falsePositives = 0;
  std::size_t trueNegatives = 0;
  std::size_t falseNegatives = 0;

  std::size_t GetTotal() const { return truePositives + falsePositives + trueNegatives + falseNegatives; }
};

/// A classifier that was taught with half of the pictures, and asked about the other half.
struct TMeasuredConcept {
  std::string tag;
  std::string classifier;
  /// Pictures.
  std::size_t taught;
  /// In the order of the collection.
  std::vector<TAskedPicture> asked;
  std::optional<double> meanSquareError;
  /// Over the pictures asked, carriers against others, by fraction and by mean score.
  double areaByFraction;
  double areaByScore;

  /// Of all pictures asked.
  TSegmentCounts CountSegments() const;
};

struct TMeasuredConcepts {
  /// What the vector of a segment is made of, with plus signs between.
  std::string features;
  /// Pictures that are in neither half: they cannot be read, or no segment has usable features.
  std::size_t leftOut = 0;
  /// By tags in byte order, then by classifiers as they were named.
  std::vector<TMeasuredConcept> concepts;
  /// Pictures of which a segment has no usable features.
  TDamageList damage;
};

/// Puts pictures, positions in the names, in the order of the SHA-256 of "SEED TAB NAME" and returns the first half,
/// rounded up, and the rest.
std::pair<std::vector<std::uint32_t>, std::vector<std::uint32_t>> SplitHalves(const std::vector<std::string>& names,
                                                                              std::vector<std::uint32_t> pictures,
                                                                              std::uint32_t seed);

/// The area under the ROC curve: the share of pairs of a positive and a negative in which the positive has the larger
/// value, ties counting half (J. Hanley, B. McNeil, Radiology 143, 1982). Neither is empty; no value is NaN.
double AreaUnderCurve(std::span<const double> positives, std::span<const double> negatives);

/// Teaches and asks each classifier of the options for each tag with at least four carriers and two other pictures that
/// take part. The segments are those of a grid, with all features that the sets of the plan use, in the order in which
/// they are named first. All segments are kept in memory. Failed, and the reason, if a picture has changed since its
/// features were extracted.
TStepOutcome MeasureConcepts(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                             TProgress& progress, TMeasuredConcepts& measured, std::string& reason);
