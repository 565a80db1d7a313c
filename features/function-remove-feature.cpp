#include "features/function-remove-feature.h"

#include "images/var-database.h"
#include "images/var-image.h"

namespace {

void RemoveFeature(TVarImage& image, const std::string& featureName) {
  image.GetImageSegment().GetFeatures().Remove(featureName);
  for (const auto& segment : image.GetSegments()) {
    segment->GetFeatures().Remove(featureName);
  }
}

}  // namespace

TFunctionRemoveFeature::TFunctionRemoveFeature() {
  name = "removefeature";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        RemoveFeature",                                      //
           "Description: Removes a feature from an 'image' or a 'database'",  //
           "Syntax:      RemoveFeature(image, \"lbp\")",                      //
           "Returns:     nothing",                                            //
           "Parameters:  1 - 'image' or 'database'",                          //
           "             2 - string"});
}

bool TFunctionRemoveFeature::Execute(const std::vector<std::string>& params) {
  const std::string featureName = StripQuotes(params[1]);
  if (auto* image = FindVariable<TVarImage>(params[0])) {
    RemoveFeature(*image, featureName);
    return true;
  }
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  if (database == nullptr) {
    Print("First parameter is not of type 'image' or 'database'");
    return false;
  }
  if (database->GetImages().empty()) {
    Print("No images in database");
    return false;
  }
  const auto& images = database->GetImages();
  std::size_t done = 0;
  for (; done < images.size() && ReportProgress(done, images.size()); ++done) {
    RemoveFeature(*images[done], featureName);
  }
  return done == images.size() || Interrupted(done, images.size());
}
