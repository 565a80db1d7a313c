#include "experiments/concept-measures.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <utility>

#include "base/console.h"
#include "base/format-string.h"
#include "base/text.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier.h"
#include "concepts/concept-vectors.h"
#include "experiments/digest.h"
#include "features/segment-feature.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"
#include "segmentation/segment-layout.h"

namespace {

// Two that teach and two that are asked: with fewer the area under the curve would be that of a single picture.
constexpr std::size_t kLeastCarriers = 4;
/// One that teaches, and one that is asked.
constexpr std::size_t kLeastOthers = 2;

using THalves = std::pair<std::vector<std::uint32_t>, std::vector<std::uint32_t>>;

/// The features of all sets, each where it is named first.
std::vector<const TFeature*> FeaturesOf(const TPlan& plan) {
  std::vector<const TFeature*> features;
  for (const TFeatureSet& set : plan.sets) {
    for (const std::size_t source : set) {
      const TFeature* feature = plan.sources[source].feature;
      if (std::find(features.begin(), features.end(), feature) == features.end()) {
        features.push_back(feature);
      }
    }
  }
  return features;
}

/// The segments of a collection and what is known of them.
class TSegmentStore {
 public:
  explicit TSegmentStore(const TPlan& thePlan) : plan(thePlan), features(FeaturesOf(thePlan)) {}

  TStepOutcome Fill(const TFeatureTable& table, TProgress& progress, TMeasuredConcepts& measured, std::string& reason) {
    const std::size_t count = table.GetPictureCount();
    std::size_t changed = 0;
    // Segments are cut from the files anew, and their figures stand beside those of the extracted features: both have
    // to be of the same pictures.
    if (!table.IsCurrent(plan.collection, 0, count, changed)) {
      return Refuse(changed, reason);
    }
    pictures.resize(count);
    sizes.resize(count);
    progress.Begin("Segments:", count);
    bool isFirst = true;
    for (std::size_t picture = 0; picture < count; ++picture) {
      if (base::Interrupted()) {
        return TStepOutcome::kInterrupted;
      }
      if (table.IsReadable(picture)) {
        if (!Cut(picture)) {
          return Refuse(picture, reason);
        }
        // The first readable picture says which features there are, and how long: later segments that differ cannot be
        // combined and are left out.
        if (isFirst) {
          const TFeatureVectorList& first = pictures[picture].front()->GetFeatures();
          vectors.CollectFeatures(first, first);
          isFirst = false;
        }
        RemoveUnusable(picture, measured.damage);
      }
      measured.leftOut += pictures[picture].empty() ? 1 : 0;
      progress.Advance();
    }
    progress.End();
    return TStepOutcome::kDone;
  }

  std::string GetFeatureNames() const {
    std::vector<std::string> names;
    for (const TConceptFeature& feature : vectors.GetFeatures()) {
      names.push_back(feature.name);
    }
    return base::Join(names, "+");
  }

  /// Empty for a picture that takes no part.
  const TImageSegmentList& GetSegments(std::uint32_t picture) const { return pictures[picture]; }

  /// The width and the height of a picture that takes part.
  std::pair<int, int> GetSize(std::uint32_t picture) const { return sizes[picture]; }

  /// The vector of a segment; it stays until the next call.
  TFeatureVector& Combine(const TImageSegment& segment) {
    vectors.Combine(segment, combined);
    return combined;
  }

 private:
  TStepOutcome Refuse(std::size_t picture, std::string& reason) const {
    reason = FormatString("'%s' has changed since its features were extracted; run the step extract again",
                          plan.collection.GetPath(picture).c_str());
    return TStepOutcome::kFailed;
  }

  /// False if the picture cannot be read.
  bool Cut(std::size_t picture) {
    if (!color.LoadFromFile(plan.collection.GetPath(picture))) {
      return false;
    }
    const bool needsGray =
        std::any_of(features.begin(), features.end(), [](const auto* each) { return each->NeedsGrayscale(); });
    if (needsGray) {
      color.ToGray(gray);
    }
    sizes[picture] = {color.GetWidth(), color.GetHeight()};
    AppendGridCells(color.GetWidth(), color.GetHeight(), pictures[picture]);
    for (const auto& segment : pictures[picture]) {
      for (const TFeature* feature : features) {
        // Without a vector of each feature the segment is not usable.
        UpdateSegmentFeature(*feature, color, gray, *segment);
      }
    }
    return true;
  }

  void RemoveUnusable(std::size_t picture, TDamageList& damage) {
    TImageSegmentList& segments = pictures[picture];
    const std::size_t all = segments.size();
    const std::size_t unusable = std::erase_if(segments, [&](const auto& segment) {
      return vectors.GetDimension() == 0 || !vectors.Combine(*segment, combined);
    });
    if (unusable > 0) {
      damage.push_back({plan.collection.names[picture], 0,
                        FormatString("%zu of %zu segments have no usable features", unusable, all)});
    }
  }

  const TPlan& plan;
  const std::vector<const TFeature*> features;
  TConceptVectors vectors;
  std::vector<TImageSegmentList> pictures;
  std::vector<std::pair<int, int>> sizes;
  TImageRGB color;
  TImageGray gray;
  TFeatureVector combined;
};

/// The pictures of a tag's lesson.
struct TLesson {
  std::string tag;
  THalves carriers;
  THalves others;

  std::size_t CountTaught() const { return carriers.first.size() + others.first.size(); }
  std::size_t CountAsked() const { return carriers.second.size() + others.second.size(); }
};

std::vector<TLesson> MakeLessons(const TExperimentOptions& options, const TPlan& plan, const TSegmentStore& store) {
  const std::vector<std::string>& names = plan.collection.names;
  std::vector<TLesson> lessons;
  for (const auto& [tag, tagged] : plan.truth.carriers) {
    std::vector<std::uint32_t> carriers;
    std::vector<std::uint32_t> others;
    for (std::uint32_t picture = 0; picture < names.size(); ++picture) {
      if (!store.GetSegments(picture).empty()) {
        // Pictures that take no part are neither carriers nor others, so that they are missing from both halves of
        // both.
        (std::binary_search(tagged.begin(), tagged.end(), picture) ? carriers : others).push_back(picture);
      }
    }
    if (carriers.size() >= kLeastCarriers && others.size() >= kLeastOthers) {
      lessons.push_back({tag, SplitHalves(names, carriers, options.seed), SplitHalves(names, others, options.seed)});
    }
  }
  return lessons;
}

void Teach(const TLesson& lesson, TSegmentStore& store, TClassifier& classifier) {
  // One vector serves every example.
  classifier.SetCopyExamples(true);
  // Carriers first, then the others, each in the order that the digests gave: libsvm and FANN depend on the order of
  // the examples.
  for (const std::uint32_t picture : lesson.carriers.first) {
    for (const auto& segment : store.GetSegments(picture)) {
      classifier.AddPositiveExample(&store.Combine(*segment));
    }
  }
  for (const std::uint32_t picture : lesson.others.first) {
    for (const auto& segment : store.GetSegments(picture)) {
      classifier.AddNegativeExample(&store.Combine(*segment));
    }
  }
}

TAskedPicture Ask(std::uint32_t picture, bool isCarrier, TSegmentStore& store, const TClassifier& classifier) {
  const auto [width, height] = store.GetSize(picture);
  TAskedPicture asked = {picture, isCarrier, width, height, {}};
  for (const auto& segment : store.GetSegments(picture)) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    const TFeatureVector& vector = store.Combine(*segment);
    const double score = classifier.Score(vector);
    asked.segments.push_back({rect.GetX(), rect.GetY(), rect.GetWidth(), rect.GetHeight(),
                              std::isfinite(score) ? score : 0.0, classifier.Classify(vector) > 0.0});
  }
  return asked;
}

/// The area under the curve of what `value` gives for the pictures.
template <typename TValue>
double AreaBy(const std::vector<TAskedPicture>& asked, const TValue& value) {
  std::vector<double> carriers;
  std::vector<double> others;
  for (const TAskedPicture& picture : asked) {
    (picture.isCarrier ? carriers : others).push_back(value(picture));
  }
  return AreaUnderCurve(carriers, others);
}

/// Teaches and asks one classifier. False if it was interrupted.
bool MeasureConcept(const TLesson& lesson, const std::string& name, std::uint32_t seed, TSegmentStore& store,
                    TProgress& progress, std::vector<TMeasuredConcept>& measured) {
  TClassifierList classifierList;
  // Each classifier begins with the same seed, so that its figures do not depend on which others were asked for.
  classifierList.SetSeed(seed);
  const std::unique_ptr<TClassifier> classifier = classifierList.Create(name);
  Teach(lesson, store, *classifier);
  classifierList.PrepareTraining(*classifier);
  classifier->Train();
  std::vector<TAskedPicture> asked;
  asked.reserve(lesson.CountAsked());
  for (const THalves* halves : {&lesson.carriers, &lesson.others}) {
    for (const std::uint32_t picture : halves->second) {
      if (base::Interrupted()) {
        return false;
      }
      asked.push_back(Ask(picture, halves == &lesson.carriers, store, *classifier));
      progress.Advance();
    }
  }
  // Back to the order of the collection, which tables and report go by.
  std::sort(asked.begin(), asked.end(),
            [](const TAskedPicture& a, const TAskedPicture& b) { return a.picture < b.picture; });
  const double areaByFraction = AreaBy(asked, [](const TAskedPicture& each) { return each.GetFraction(); });
  const double areaByScore = AreaBy(asked, [](const TAskedPicture& each) { return each.GetMeanScore(); });
  measured.push_back({lesson.tag, name, lesson.CountTaught(), std::move(asked), classifier->GetTrainingError(),
                      areaByFraction, areaByScore});
  return true;
}

}  // namespace

double TAskedPicture::GetFraction() const {
  const auto positive =
      std::count_if(segments.begin(), segments.end(), [](const TAskedSegment& each) { return each.isPositive; });
  return static_cast<double>(positive) / static_cast<double>(segments.size());
}

double TAskedPicture::GetMeanScore() const {
  const double sum = std::accumulate(segments.begin(), segments.end(), 0.0,
                                     [](double before, const TAskedSegment& each) { return before + each.score; });
  return sum / static_cast<double>(segments.size());
}

std::size_t TAskedPicture::CountRight() const {
  return static_cast<std::size_t>(std::count_if(
      segments.begin(), segments.end(), [&](const TAskedSegment& each) { return each.isPositive == isCarrier; }));
}

TSegmentCounts TMeasuredConcept::CountSegments() const {
  TSegmentCounts counts;
  for (const TAskedPicture& picture : asked) {
    for (const TAskedSegment& segment : picture.segments) {
      if (segment.isPositive) {
        ++(picture.isCarrier ? counts.truePositives : counts.falsePositives);
      } else {
        ++(picture.isCarrier ? counts.falseNegatives : counts.trueNegatives);
      }
    }
  }
  return counts;
}

std::pair<std::vector<std::uint32_t>, std::vector<std::uint32_t>> SplitHalves(const std::vector<std::string>& names,
                                                                              std::vector<std::uint32_t> pictures,
                                                                              std::uint32_t seed) {
  std::vector<std::pair<std::string, std::uint32_t>> drawn;
  drawn.reserve(pictures.size());
  for (const std::uint32_t picture : pictures) {
    // A draw that any program can repeat from names and seed, that does not change when other pictures join the
    // collection, and that needs no generator of random numbers.
    drawn.emplace_back(DigestOf(std::to_string(seed) + "\t" + names[picture]), picture);
  }
  std::sort(drawn.begin(), drawn.end());
  std::transform(drawn.begin(), drawn.end(), pictures.begin(), [](const auto& each) { return each.second; });
  // The odd one teaches.
  const auto middle = pictures.begin() + static_cast<std::ptrdiff_t>((pictures.size() + 1) / 2);
  return {{pictures.begin(), middle}, {middle, pictures.end()}};
}

double AreaUnderCurve(std::span<const double> positives, std::span<const double> negatives) {
  // The Mann-Whitney statistic. A search in sorted values for each positive takes n log n steps in place of all pairs.
  std::vector<double> sorted(negatives.begin(), negatives.end());
  // Values that are not numbers would leave this without an order; Ask puts 0 in their place.
  std::sort(sorted.begin(), sorted.end());
  // In halves, so that the count is exact.
  std::size_t halves = 0;
  for (const double value : positives) {
    // Below `low` the positive is larger: two halves each. Between the two it is a tie: one half.
    const auto [low, high] = std::equal_range(sorted.begin(), sorted.end(), value);
    halves += static_cast<std::size_t>(low - sorted.begin()) + static_cast<std::size_t>(high - sorted.begin());
  }
  const auto pairs = static_cast<double>(positives.size()) * static_cast<double>(negatives.size());
  return static_cast<double>(halves) / (2.0 * pairs);
}

TStepOutcome MeasureConcepts(const TExperimentOptions& options, const TPlan& plan, const TFeatureTable& table,
                             TProgress& progress, TMeasuredConcepts& measured, std::string& reason) {
  TSegmentStore store(plan);
  if (const TStepOutcome outcome = store.Fill(table, progress, measured, reason); outcome != TStepOutcome::kDone) {
    return outcome;
  }
  measured.features = store.GetFeatureNames();
  const std::vector<TLesson> lessons = MakeLessons(options, plan, store);
  const std::size_t asked =
      std::accumulate(lessons.begin(), lessons.end(), std::size_t{0},
                      [](std::size_t sum, const TLesson& each) { return sum + each.CountAsked(); });
  progress.Begin("Concepts:", asked * options.classifiers.size());
  for (const TLesson& lesson : lessons) {
    for (const std::string& name : options.classifiers) {
      if (!MeasureConcept(lesson, name, options.seed, store, progress, measured.concepts)) {
        return TStepOutcome::kInterrupted;
      }
    }
  }
  progress.End();
  return TStepOutcome::kDone;
}
