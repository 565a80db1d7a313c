#include "features/commands.h"

#include <algorithm>

#include "base/format-string.h"
#include "features/feature-list.h"
#include "features/segment-feature.h"
#include "images/image-command.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// updatefeature: computes a feature for an image, or for every image of a database, on the whole image and on each of
/// its segments. The one place where pixels meet features.
class TFunctionUpdateFeature : public TImageCommand {
 public:
  TFunctionUpdateFeature()
      : TImageCommand({.name = "updatefeature", .kinds = {"variable", "string"}, .help = R"(
Name:        UpdateFeature
Description: Calculates a feature for an 'image' or a 'database' and stores the
             results in that variable. Feature arguments can be given as 
             parameters 3..n.
Syntax:      updatefeature(a, "lbp")
Returns:     nothing
Parameters:  1 - 'image' or 'database'
             2 - string
             3..n - integer)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const TFeature* feature = featureList->Find(StripQuotes(params[1]));
    if (!images) {
      return false;
    }
    if (feature == nullptr) {
      return Fail("Feature not found");
    }
    int count = 0;
    return ProcessImages(*images, [&](TVarImage& image, TPictureReport& report) {
      if (!ProcessImage(*feature, image, report)) {
        return false;
      }
      // Some seconds' worth of pictures: often enough to show life, seldom enough to leave the output readable.
      if (++count % 100 == 0) {
        ProcessEvents();
        Print(FormatString("%d images processed", count));
      }
      return true;
    });
  }

 private:
  /// Decodes the file once for all segments. A file that cannot be read acts as a picture of 0 x 0.
  bool ProcessImage(const TFeature& feature, TVarImage& image, TPictureReport& report) const {
    TImageRGB color;
    const bool isRead = report.Load(image.GetFilename(), color);
    TImageGray gray;
    if (feature.NeedsGrayscale()) {
      color.ToGray(gray);
    }
    TImageSegmentRect& whole = image.GetImageSegment();
    // The rectangle is known only now: an image variable is a file name until somebody decodes it.
    whole.SetX(0);
    whole.SetY(0);
    whole.SetWidth(color.GetWidth());
    whole.SetHeight(color.GetHeight());
    // The first failure ends the command: a feature that cannot say its length fails on every segment.
    const auto process = [&](TImageSegment& segment) { return UpdateSegmentFeature(feature, color, gray, segment); };
    bool computed = process(whole);
    if (computed) {
      whole.GetFeatures().Find(feature.GetName())->SetLacksPicture(!isRead);
    }
    computed = computed && std::all_of(image.GetSegments().begin(), image.GetSegments().end(),
                                       [&](const auto& segment) { return process(*segment); });
    return computed || Fail(FormatString("Feature '%s' has an invalid length", feature.GetName().c_str()));
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeUpdateFeature() {
  return std::make_unique<TFunctionUpdateFeature>();
}
