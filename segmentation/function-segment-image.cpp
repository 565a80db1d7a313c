#include "segmentation/function-segment-image.h"

#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "segmentation/interest-points-sift.h"
#include "segmentation/segment-layout.h"
#include "segmentation/segmentation-methods.h"

namespace {

void SegmentGrid(TVarImage& image, const TImageRGB& picture) {
  ClearSegments(image.GetSegments());
  AppendGridCells(picture.GetWidth(), picture.GetHeight(), image.GetSegments());
}

void SegmentSift(TVarImage& image, const TImageRGB& picture) {
  std::vector<TInterestPoint> points;
  TInterestPointsSift().Detect(picture, points);
  for (const TInterestPoint& point : points) {
    AppendKeypointSquare(point, picture.GetWidth(), picture.GetHeight(), image.GetSegments());
  }
}

void SegmentImage(TVarImage& image, const std::string& method, TPictureReport& report) {
  TImageRGB picture;
  report.Load(image.GetFilename(), picture);
  if (method == kGridMethod) {
    SegmentGrid(image, picture);
  } else {
    SegmentSift(image, picture);
  }
}

}  // namespace

TFunctionSegmentImage::TFunctionSegmentImage() {
  name = "segmentimage";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        SegmentImage",                                                        //
           "Description: Segments an 'image' or a images in a 'database' based on the given",  //
           "             segmentation method.",                                                //
           "Syntax:      SegmentImage(image, \"grid\")",                                       //
           "Returns:     nothing",                                                             //
           "Parameters:  1 - 'image' or 'database'",                                           //
           "             2 - string"});
}

bool TFunctionSegmentImage::Execute(const std::vector<std::string>& params) {
  auto* image = FindVariable<TVarImage>(params[0]);
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  const std::string method = StripQuotes(params[1]);
  if (image == nullptr && database == nullptr) {
    Print("First parameter is not of type 'image' or 'database'");
    return false;
  }
  if (method != kGridMethod && method != kSiftMethod) {
    Print("Unknown segmentation method");
    return false;
  }
  TPictureReport report(output);
  if (image != nullptr) {
    SegmentImage(*image, method, report);
    return true;
  }
  Print("Processing.. this could take some time");
  const auto& images = database->GetImages();
  std::size_t done = 0;
  for (; done < images.size() && ReportProgress(done, images.size()); ++done) {
    SegmentImage(*images[done], method, report);
  }
  report.PrintRest();
  if (done < images.size()) {
    return Interrupted(done, images.size());
  }
  Print("Processing done");
  return true;
}
