#include "concepts/commands.h"

#include <algorithm>

#include "base/format-string.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "concepts/var-visual-concept.h"
#include "engine/function.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

const TFeatureVectorList& FirstSegmentFeatures(const TVarDatabase& database) {
  // The first segment stands for all, as the first image does for a database.
  return database.GetImages().front()->GetSegments().front()->GetFeatures();
}

bool HasUsableSegment(const TConceptVectors& vectors, const TVarDatabase& database) {
  TFeatureVector combined;
  return std::any_of(database.GetImages().begin(), database.GetImages().end(), [&](const auto& image) {
    // Ends at the first one, which is the very first segment as a rule.
    return std::any_of(image->GetSegments().begin(), image->GetSegments().end(),
                       [&](const auto& segment) { return vectors.Combine(*segment, combined); });
  });
}

bool HoldsOtherLengths(const TFeatureVectorList& examples, std::uint32_t length) {
  return std::any_of(examples.GetItems().begin(), examples.GetItems().end(),
                     [length](const auto* example) { return example->GetLength() != length; });
}

/// Hands the combined vector of every usable segment of the image to `add`. Returns how many segments were left out.
template <typename TAdd>
int AddExamples(const TConceptVectors& vectors, const TVarImage& image, const TAdd& add) {
  int skipped = 0;
  TFeatureVector combined;
  for (const auto& segment : image.GetSegments()) {
    if (vectors.Combine(*segment, combined)) {
      add(&combined);
    } else {
      ++skipped;
    }
  }
  return skipped;
}

/// learnvisualconcept: teaches a classifier with every segment of two databases, those of the first as positive
/// examples and those of the second as negative ones, and leaves a concept that refers to it.
class TFunctionLearnVisualConcept : public TFunction {
 public:
  TFunctionLearnVisualConcept()
      : TFunction({.name = "learnvisualconcept",
                   .kinds = {"variable", "variable", "variable"},
                   .returns = Returns<TVarVisualConcept>(),
                   .help = R"(
Name:        LearnVisualConcept
Description: Learns a visual concept from two 'database' variables, with
             positive and negative examples, and applying a classifier to them
Syntax:      concept = learnvisualconcept(db_positive, db_negative, classifier)
Returns:     'visualconcept'
Parameters:  1 - 'database'
             2 - 'database'
             3 - 'classifier')"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& visualConcept = dynamic_cast<TVarVisualConcept&>(variable);
    const auto* positive = Require<TVarDatabase>(params, 1);
    const auto* negative = positive == nullptr ? nullptr : Require<TVarDatabase>(params, 2);
    // Parameter by parameter: only the first wrong one is reported.
    const auto* classifierVariable = negative == nullptr ? nullptr : Require<TVarClassifier>(params, 3);
    if (classifierVariable == nullptr || !CheckSegmented(*positive, *negative)) {
      return false;
    }
    // A classifier variable in the store always has one: createclassifier and copies make it.
    TClassifier& classifier = *classifierVariable->GetClassifier();
    visualConcept.SetClassifier(classifierVariable->WatchClassifier());
    visualConcept.GetVectors().CollectFeatures(FirstSegmentFeatures(*positive), FirstSegmentFeatures(*negative));
    return CheckExamples(visualConcept, classifier, *positive, *negative) &&
           Train(visualConcept, classifier, *positive, *negative);
  }

 private:
  /// Tests that both databases hold images that are segmented; prints a line if not.
  bool CheckSegmented(const TVarDatabase& positive, const TVarDatabase& negative) const {
    // A database without images is reported before missing segments of the other.
    const bool isFirstEmpty = positive.GetImages().empty();
    if (isFirstEmpty || negative.GetImages().empty()) {
      return Fail(FormatString("%s database does not contain images", isFirstEmpty ? "First" : "Second"));
    }
    const bool isFirstWhole = positive.GetImages().front()->GetSegments().empty();
    if (isFirstWhole || negative.GetImages().front()->GetSegments().empty()) {
      return Fail(FormatString("Images in %s database are not segmented", isFirstWhole ? "first" : "second"));
    }
    return true;
  }

  /// Tests that the concept's examples would fit the classifier and that there are some; prints a line if not.
  bool CheckExamples(const TVarVisualConcept& visualConcept, const TClassifier& classifier,
                     const TVarDatabase& positive, const TVarDatabase& negative) const {
    // A classifier may be taught by several commands and gathers the examples of all of them; they must have one
    // length.
    if (HoldsOtherLengths(classifier.GetPositiveExamples(), visualConcept.GetVectors().GetDimension()) ||
        HoldsOtherLengths(classifier.GetNegativeExamples(), visualConcept.GetVectors().GetDimension())) {
      return Fail("Classifier holds examples of another length: createclassifier makes it new");
    }
    if (!HasUsableSegment(visualConcept.GetVectors(), positive)) {
      return Fail("No usable segments in first database");
    }
    return HasUsableSegment(visualConcept.GetVectors(), negative) || Fail("No usable segments in second database");
  }

  /// Adds all examples and trains. False if the user ended it.
  bool Train(const TVarVisualConcept& visualConcept, TClassifier& classifier, const TVarDatabase& positive,
             const TVarDatabase& negative) const {
    const bool hasFeatures = !visualConcept.GetVectors().GetFeatures().empty();
    if (!hasFeatures) {
      Print("No features in common: no example holds a number");
    }
    // One vector serves every example.
    classifier.SetCopyExamples(true);
    const std::size_t positives = positive.GetImages().size();
    // One count over both databases, for the progress that the user sees.
    const std::size_t total = positives + negative.GetImages().size();
    int skipped = 0;
    const auto step = [&](std::size_t i) {
      if (i < positives) {
        skipped += AddExamples(visualConcept.GetVectors(), *positive.GetImages()[i],
                               [&](auto* example) { classifier.AddPositiveExample(example); });
      } else {
        skipped += AddExamples(visualConcept.GetVectors(), *negative.GetImages()[i - positives],
                               [&](auto* example) { classifier.AddNegativeExample(example); });
      }
      return true;
    };
    if (!ForEach(total, step, [&] { PrintCount(skipped, "segments without usable features skipped"); })) {
      return false;
    }
    // The training itself may take minutes and shows nothing: the window is drawn once more before it.
    ProcessEvents();
    classifierList->PrepareTraining(classifier);
    bool isWanted = true;
    if (work != nullptr) {
      classifier.SetTrainingWatcher([&] { return isWanted = ReportProgress(total, total); });
    }
    classifier.Train();
    // It refers to a variable of this call.
    classifier.SetTrainingWatcher({});
    if (!isWanted) {
      return Interrupted(total, total);
    }
    // Without a feature in common there are examples of length 0, on which no training took place.
    if (const auto error = classifier.GetTrainingError(); error && hasFeatures) {
      Print(FormatString("Mean square error: %.6f", *error));
    }
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeLearnVisualConcept() {
  return std::make_unique<TFunctionLearnVisualConcept>();
}
