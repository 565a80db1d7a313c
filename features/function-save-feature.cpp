#include "features/function-save-feature.h"

#include "base/format-string.h"
#include "base/native-path.h"
#include "features/feature-sources.h"
#include "features/feature-store.h"
#include "images/var-database.h"
#include "images/var-image.h"

TFunctionSaveFeature::TFunctionSaveFeature() {
  name = "savefeature";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        SaveFeature",                                         //
           "Description: Saves a feature from a 'database' in local storage",  //
           "Syntax:      savefeature(database, \"lbp\")",                      //
           "Returns:     nothing",                                             //
           "Parameters:  1 - 'database'",                                      //
           "             2 - string"});
}

bool TFunctionSaveFeature::Execute(const std::vector<std::string>& params) {
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  const std::string featureName = StripQuotes(params[1]);
  if (database == nullptr) {
    Print("First parameter is not of type 'database'");
    return false;
  }
  if (database->GetImages().empty()) {
    Print("No images in database");
    return false;
  }
  if (database->GetImages().front()->GetImageSegment().GetFeatures().Find(featureName) == nullptr) {
    Print("Feature not found in database");
    return false;
  }
  TFeatureSources sources(featureName);
  int skipped = 0;
  const auto& images = database->GetImages();
  std::string failedFile;
  std::size_t done = 0;
  for (; done < images.size() && failedFile.empty() && ReportProgress(done, images.size()); ++done) {
    const TVarImage& image = *images[done];
    const TFeatureVector* vector = image.GetImageSegment().GetFeatures().Find(featureName);
    if (vector == nullptr) {
      ++skipped;
      continue;
    }
    const std::string path = StoredFeaturePath(featureName, image.GetFilename());
    if (SaveStoredFeature(path, *vector)) {
      sources.Note(base::FileNameOf(path), image.GetFilename());
    } else {
      failedFile = path;
    }
  }
  // Whatever ended the loop, what was saved so far has its sources.
  if (!sources.Save() && failedFile.empty()) {
    failedFile = sources.GetPath();
  }
  if (!failedFile.empty()) {
    Print(FormatString("File '%s' cannot be written", failedFile.c_str()));
    return false;
  }
  if (skipped > 0) {
    Print(FormatString("%d images without the feature skipped", skipped));
  }
  return done == images.size() || Interrupted(done, images.size());
}
