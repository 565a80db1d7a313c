#include "features/commands.h"

#include "images/image-command.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// removefeature: takes the vectors of that name, which need not be a known feature, from an image or from every image
/// of a database, and from their segments.
class TFunctionRemoveFeature : public TImageCommand {
 public:
  TFunctionRemoveFeature()
      : TImageCommand({.name = "removefeature", .kinds = {"variable", "string"}, .help = R"(
Name:        RemoveFeature
Description: Removes a feature from an 'image' or a 'database'
Syntax:      RemoveFeature(image, "lbp")
Returns:     nothing
Parameters:  1 - 'image' or 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const std::string featureName = StripQuotes(params[1]);
    if (!images) {
      return false;
    }
    if (images->GetSize() == 0) {
      return Fail("No images in database");
    }
    return ForEachImage(*images, [&](TVarImage& image) {
      image.GetImageSegment().GetFeatures().Remove(featureName);
      for (const auto& segment : image.GetSegments()) {
        segment->GetFeatures().Remove(featureName);
      }
      return true;
    });
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeRemoveFeature() {
  return std::make_unique<TFunctionRemoveFeature>();
}
