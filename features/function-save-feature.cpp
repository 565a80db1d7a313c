#include "features/commands.h"

#include "base/abandoned-files.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "features/feature-sources.h"
#include "features/feature-store.h"
#include "images/image-command.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// savefeature: writes one feature of all images of a database into "FeatureStorage". Images without it are
/// skipped, and so are those whose picture could not be read when it was computed.
class TFunctionSaveFeature : public TImageCommand {
 public:
  TFunctionSaveFeature()
      : TImageCommand({.name = "savefeature", .kinds = {"variable", "string"}, .help = R"(
Name:        SaveFeature
Description: Saves a feature from a 'database' in local storage
Syntax:      savefeature(database, "lbp")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = RequireFilledDatabase(params, "No images in database");
    const std::string featureName = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    // The first image stands for all; images that lack the feature are skipped and counted.
    if (database->GetImages().front()->GetImageSegment().GetFeatures().Find(featureName) == nullptr) {
      return Fail("Feature not found in database");
    }
    TFeatureSources sources(featureName);
    if (!sources.IsKnown()) {
      return Fail(FormatString("File '%s' cannot be read", sources.GetPath().c_str()));
    }
    base::RemoveAbandonedFiles(kFeatureDirectory);
    int skipped = 0;
    int unread = 0;
    std::string failedFile;
    const auto step = [&](const TVarImage& image) {
      const TFeatureVector* vector = image.GetImageSegment().GetFeatures().Find(featureName);
      if (vector == nullptr) {
        ++skipped;
        return true;
      }
      // What an earlier run stored of the picture is better than numbers of nothing.
      if (vector->GetLacksPicture()) {
        ++unread;
        return true;
      }
      const std::string path = StoredFeaturePath(featureName, image.GetFilename());
      if (!SaveStoredFeature(path, *vector)) {
        // Ends the command: where one file cannot be written, as on a full disk, the others cannot either.
        failedFile = path;
        return false;
      }
      sources.Note(base::FileNameOf(path), image.GetFilename());
      return true;
    };
    const auto atEnd = [&] {
      PrintCount(skipped, "images without the feature skipped");
      PrintCount(unread, "images that could not be read are not saved");
    };
    const bool succeeded = ForEachImage(TImageSelection(*database), step, atEnd);
    // Whatever ended the loop, what was saved so far has its sources.
    if (!sources.Save() && failedFile.empty()) {
      failedFile = sources.GetPath();
    }
    if (!failedFile.empty()) {
      return Fail(FormatString("File '%s' cannot be written", failedFile.c_str()));
    }
    return succeeded;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeSaveFeature() {
  return std::make_unique<TFunctionSaveFeature>();
}
