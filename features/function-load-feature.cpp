#include "features/function-load-feature.h"

#include <QCoreApplication>

#include "base/format-string.h"
#include "features/feature-list.h"
#include "features/feature-store.h"
#include "images/var-database.h"
#include "images/var-image.h"

TFunctionLoadFeature::TFunctionLoadFeature() {
  name = "loadfeature";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        LoadFeature",                                          //
           "Description: Loads a feature for a 'database' from local storage",  //
           "Syntax:      loadfeature(database, \"lbp\")",                       //
           "Returns:     nothing",                                              //
           "Parameters:  1 - 'database'",                                       //
           "             2 - string"});
}

bool TFunctionLoadFeature::Execute(const std::vector<std::string>& params) {
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
  if (featureList->Find(featureName) == nullptr) {
    Print("Unknown feature");
    return false;
  }
  Print("Loading features..");
  base::TFileReader reader;
  for (const auto& image : database->GetImages()) {
    LoadImage(reader, featureName, *image);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
  Print("Done");
  return true;
}

void TFunctionLoadFeature::LoadImage(base::TFileReader& reader, const std::string& featureName,
                                     TVarImage& image) const {
  const std::string path = StoredFeaturePath(featureName, image.GetFilename());
  TFeatureVectorList& features = image.GetImageSegment().GetFeatures();
  TFeatureVector* known = features.Find(featureName);
  auto added = known == nullptr ? std::make_unique<TFeatureVector>() : nullptr;
  if (added) {
    added->SetName(featureName);
  }
  const base::TReadOutcome outcome = LoadStoredFeature(reader, path, added ? *added : *known);
  if (outcome == base::TReadOutcome::kTooLarge) {
    Print(FormatString("File '%s' is too large", path.c_str()));
  } else if (outcome == base::TReadOutcome::kRead && added) {
    features.Add(added.release());
  }
}
