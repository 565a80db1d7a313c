#include "images/commands.h"

#include "base/native-path.h"
#include "engine/function.h"
#include "images/var-image.h"

namespace {

/// loadimage: an image variable for an existing file. The file is not opened, so it may be no image at all.
class TFunctionLoadImage : public TFunction {
 public:
  TFunctionLoadImage()
      : TFunction({.name = "loadimage", .kinds = {"string"}, .returns = Returns<TVarImage>(), .help = R"(
Name:        LoadImage
Description: Loads an image into an 'image' variable
Syntax:      a = loadimage("C:\Directory\File.jpg")
Returns:     'image'
Parameters:  1 - string)"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& image = dynamic_cast<TVarImage&>(variable);
    const std::string filename = StripQuotes(params[0]);
    if (!base::IsRegularFile(filename)) {
      return Fail("File does not exist");
    }
    image.SetFilename(filename);
    // The variable may have held another image: its vectors would be taken for those of the new file. Tags stay; they
    // are the user's.
    image.GetImageSegment().GetFeatures().Clear();
    ClearSegments(image.GetSegments());
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeLoadImage() {
  return std::make_unique<TFunctionLoadImage>();
}
