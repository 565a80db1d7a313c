#include "engine/command-factories.h"
#include "images/image-command.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "segmentation/interest-points-sift.h"
#include "segmentation/segment-layout.h"
#include "segmentation/segmentation-methods.h"

namespace {

void SegmentImage(TVarImage& image, const std::string& method, TPictureReport& report) {
  TImageRGB picture;
  // A picture that cannot be read is one of 0 x 0: its grid has 64 empty cells and it has no keypoints.
  report.Load(image.GetFilename(), picture);
  if (method == kGridMethod) {
    // A grid replaces, while keypoints add to what is there: a user may combine both, beginning with the grid.
    ClearSegments(image.GetSegments());
    AppendGridCells(picture.GetWidth(), picture.GetHeight(), image.GetSegments());
    return;
  }
  std::vector<TInterestPoint> points;
  TInterestPointsSift().Detect(picture, points);
  for (const TInterestPoint& point : points) {
    AppendKeypointSquare(point, picture.GetWidth(), picture.GetHeight(), image.GetSegments());
  }
}

/// segmentimage: cuts an image, or every image of a database, into segments. "grid" replaces the segments of an image,
/// "sift" adds to them.
class TFunctionSegmentImage : public TImageCommand {
 public:
  TFunctionSegmentImage()
      : TImageCommand({.name = "segmentimage", .kinds = {"variable", "string"}, .help = R"(
Name:        SegmentImage
Description: Segments an 'image' or a images in a 'database' based on the given
             segmentation method.
Syntax:      SegmentImage(image, "grid")
Returns:     nothing
Parameters:  1 - 'image' or 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const std::string method = StripQuotes(params[1]);
    if (!images) {
      return false;
    }
    if (method != kGridMethod && method != kSiftMethod) {
      return Fail("Unknown segmentation method");
    }
    // A file that cannot be read is reported and does not end the command: one bad file in a hundred thousand must not
    // cost the others.
    return ProcessImages(*images, [&](TVarImage& image, TPictureReport& report) {
      SegmentImage(image, method, report);
      return true;
    });
  }
};

}  // namespace

const TFunctionFactory kMakeSegmentImage = MakeFunction<TFunctionSegmentImage>;
