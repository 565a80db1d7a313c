#include "features/commands.h"

#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "features/feature-list.h"
#include "features/feature-sources.h"
#include "features/feature-store.h"
#include "images/image-command.h"
#include "images/picture-report.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// loadfeature: reads one feature of the running system for all images of a database from "FeatureStorage". Images
/// without a file there, or with one of another length than the feature's, stay as they are, and are counted; so are
/// vectors that are known to come from other pictures.
class TFunctionLoadFeature : public TImageCommand {
 public:
  TFunctionLoadFeature()
      : TImageCommand({.name = "loadfeature", .kinds = {"variable", "string"}, .help = R"(
Name:        LoadFeature
Description: Loads a feature for a 'database' from local storage
Syntax:      loadfeature(database, "lbp")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = RequireFilledDatabase(params, "No images in database");
    const std::string featureName = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    const TFeature* feature = featureList->Find(featureName);
    // A feature that the program does not have could not be computed for a query.
    if (feature == nullptr) {
      return Fail("Unknown feature");
    }
    Print("Loading features..");
    // Nothing is refused on the strength of it: a collection that was moved has other paths and the same pictures. The
    // user is told, and decides.
    const TFeatureSources sources(featureName);
    if (!sources.IsKnown()) {
      PrintLoss(FormatString("File '%s' cannot be read", sources.GetPath().c_str()));
    }
    TStoredFeatureReader reader(featureName, feature->GetLength());
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    int fromOthers = 0;
    int missing = 0;
    const auto step = [&](TVarImage& image) {
      const base::TReadOutcome outcome = LoadImage(reader, featureName, image);
      if (outcome == base::TReadOutcome::kRead) {
        fromOthers += sources.ComeFromOther(base::FileNameOf(reader.GetPath()), image.GetFilename()) ? 1 : 0;
      } else if (outcome == base::TReadOutcome::kUnreadable) {
        // A file that is there and cannot be read is reported by name; one that is not there is the usual case and only
        // counted.
        report.AddUnreadable(reader.GetPath());
      } else if (outcome == base::TReadOutcome::kAbsent) {
        ++missing;
      }
      ProcessEvents();
      return true;
    };
    const auto atEnd = [&] {
      report.PrintRest();
      PrintCount(fromOthers, "stored features come from other pictures");
      PrintCount(missing, "images without a stored feature");
    };
    if (!ForEachImage(TImageSelection(*database), step, atEnd)) {
      return false;
    }
    Print("Done");
    return true;
  }

 private:
  base::TReadOutcome LoadImage(TStoredFeatureReader& reader, const std::string& featureName, TVarImage& image) const {
    TFeatureVectorList& features = image.GetImageSegment().GetFeatures();
    // A vector that is there is filled in its place, so that the order of features, which decides the order of sums in
    // a search, stays.
    TFeatureVector* known = features.Find(featureName);
    auto added = known == nullptr ? std::make_unique<TFeatureVector>() : nullptr;
    if (added) {
      added->SetName(featureName);
    }
    const base::TReadOutcome outcome = reader.Read(image.GetFilename(), added ? *added : *known);
    if (outcome == base::TReadOutcome::kTooLarge) {
      PrintLoss(FormatString("File '%s' is too large", reader.GetPath().c_str()));
    } else if (outcome == base::TReadOutcome::kRead && added) {
      features.Add(added.release());
    }
    return outcome;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeLoadFeature() {
  return std::make_unique<TFunctionLoadFeature>();
}
