#include <algorithm>

#include "base/format-string.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "concepts/var-visual-concept-locations.h"
#include "concepts/var-visual-concept.h"
#include "engine/command-factories.h"
#include "images/image-command.h"
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
    return (!isFirstWhole && !negative.GetImages().front()->GetSegments().empty()) ||
           Fail(FormatString("Images in %s database are not segmented", isFirstWhole ? "first" : "second"));
  }

  /// Tests that the concept's examples would fit the classifier and that there are some; prints a line if not.
  bool CheckExamples(const TVarVisualConcept& visualConcept, const TClassifier& classifier,
                     const TVarDatabase& positive, const TVarDatabase& negative) const {
    // A classifier may be taught by several commands and gathers the examples of all of them; they must have one
    // length.
    if (!classifier.ExamplesHaveLength(visualConcept.GetVectors().GetDimension())) {
      return Fail("Classifier holds examples of another length: createclassifier makes it new");
    }
    const TConceptVectors& vectors = visualConcept.GetVectors();
    return (HasUsableSegment(vectors, positive) || Fail("No usable segments in first database")) &&
           (HasUsableSegment(vectors, negative) || Fail("No usable segments in second database"));
  }

  /// Adds all examples and trains. False if the user ended it.
  bool Train(const TVarVisualConcept& visualConcept, TClassifier& classifier, const TVarDatabase& positive,
             const TVarDatabase& negative) const {
    const bool hasFeatures = !visualConcept.GetVectors().GetFeatures().empty();
    if (!hasFeatures) {
      Print("No features in common: no example holds a number");
    }
    // One vector, `combined`, serves every example.
    classifier.SetCopyExamples(true);
    const std::size_t positives = positive.GetImages().size();
    // One count over both databases, for the progress that the user sees.
    const std::size_t total = positives + negative.GetImages().size();
    int skipped = 0;
    TFeatureVector combined;
    const auto step = [&](std::size_t i) {
      const bool isPositive = i < positives;
      for (const auto& segment :
           (isPositive ? positive.GetImages()[i] : negative.GetImages()[i - positives])->GetSegments()) {
        if (!visualConcept.GetVectors().Combine(*segment, combined)) {
          ++skipped;
        } else if (isPositive) {
          classifier.AddPositiveExample(&combined);
        } else {
          classifier.AddNegativeExample(&combined);
        }
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

/// Base of the commands that look for a concept in the segments of images.
class TConceptCommand : public TImageCommand {
 protected:
  using TImageCommand::TImageCommand;

  /// Labels every segment of the images on which the concept is found with the tag, takes the labels from all others,
  /// and if `tagsImages` tags the images on which it was found. False if the tag is empty, the concept has no
  /// classifier or the user ended it; the reason has been printed.
  bool Locate(const TImageSelection& images, const TVarVisualConcept& visualConcept, const std::string& tag,
              bool tagsImages) const {
    if (tag.empty()) {
      return Fail("Tag is empty");
    }
    // Held for this one command: the user may replace the classifier variable, and the concept must notice at the next
    // one.
    const auto classifier = visualConcept.LockClassifier();
    if (!classifier) {
      return Fail("Concept has no classifier");
    }
    int skipped = 0;
    int tagged = 0;
    const auto step = [&](TVarImage& image) {
      skipped += visualConcept.Locate(*classifier, tag, image);
      // Every label is this concept's: locating it has taken all others away.
      const bool isFound = std::any_of(image.GetSegments().begin(), image.GetSegments().end(),
                                       [](const auto& segment) { return !segment->GetLabel().empty(); });
      if (tagsImages && isFound) {
        ++tagged;
        if (!image.HasTag(tag)) {
          image.GetTags().push_back(tag);
        }
      }
      return true;
    };
    return ForEachImage(images, step, [&] {
      PrintCount(skipped, "segments without usable features skipped");
      if (tagsImages) {
        Print(FormatString("%d images tagged", tagged));
      }
    });
  }
};

/// findvisualconceptlocations: labels the segments of an image, or of all images of a database, on which a concept is
/// found, and takes the labels from all others.
class TFunctionFindVisualConceptLocations : public TConceptCommand {
 public:
  TFunctionFindVisualConceptLocations()
      : TConceptCommand({.name = "findvisualconceptlocations", .kinds = {"variable", "variable", "string"}, .help = R"(
Name:        FindVisualConceptLocations
Description: Locates a 'visualconcept' in segments of an 'image'
Syntax:      findvisualconceptlocations(image, concept, "tree")
Returns:     nothing
Parameters:  1 - 'image'
             2 - 'visualconcept'
             3 - tag)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const auto* visualConcept = images ? Require<TVarVisualConcept>(params, 2) : nullptr;
    return visualConcept != nullptr && Locate(*images, *visualConcept, StripQuotes(params[2]), false);
  }
};

/// updatevisualconcepttags: labels the segments of a database as findvisualconceptlocations does, and tags every image
/// on which the concept was found.
class TFunctionUpdateVisualConceptTags : public TConceptCommand {
 public:
  TFunctionUpdateVisualConceptTags()
      : TConceptCommand({.name = "updatevisualconcepttags", .kinds = {"variable", "variable", "string"}, .help = R"(
Name:        UpdateVisualConceptTags
Description: Adds tags to 'database' if a 'concept' is found in the image
Syntax:      updatevisualconcepttags(db, concept, "tree")
Returns:     nothing
Parameters:  1 - 'database'
             2 - 'visualconcept'
             3 - tag)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = FindVariable<TVarDatabase>(params[0]);
    const auto* visualConcept = FindVariable<TVarVisualConcept>(params[1]);
    if (database == nullptr) {
      return Fail("First variable is not of type 'database'");
    }
    if (visualConcept == nullptr) {
      return Fail("Second variable is not of type 'visualconcept'");
    }
    return Locate(TImageSelection(*database), *visualConcept, StripQuotes(params[2]), true);
  }
};

/// displayvisualconceptlocations: tests its parameters and ends there, since no command makes a variable of the second
/// one's type; displayimage shows where a concept was found.
class TFunctionDisplayVisualConceptLocations : public TFunction {
 public:
  TFunctionDisplayVisualConceptLocations()
      : TFunction({.name = "displayvisualconceptlocations", .kinds = {"variable", "variable"}, .help = R"(
Name:        DisplayVisualConceptLocations
Description: Displays 'visualconceptlocations' in an 'image'
Syntax:      displayvisualconceptlocations(image, locations)
Returns:     nothing
Parameters:  1 - 'image'
Parameters:  2 - 'visualconceptlocations')"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    return (FindVariable<TVarImage>(params[0]) != nullptr &&
            FindVariable<TVarVisualConceptLocations>(params[1]) != nullptr) ||
           Fail("Incorrect parameter types");
  }
};

}  // namespace

const TFunctionFactory kMakeLearnVisualConcept = MakeFunction<TFunctionLearnVisualConcept>;
const TFunctionFactory kMakeFindVisualConceptLocations = MakeFunction<TFunctionFindVisualConceptLocations>;
const TFunctionFactory kMakeUpdateVisualConceptTags = MakeFunction<TFunctionUpdateVisualConceptTags>;
const TFunctionFactory kMakeDisplayVisualConceptLocations = MakeFunction<TFunctionDisplayVisualConceptLocations>;
