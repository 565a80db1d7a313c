#include "segmentation/function-segment-image.h"

#include "images/image-rgb.h"
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

void SegmentImage(TVarImage& image, const std::string& method) {
  TImageRGB picture;
  picture.LoadFromFile(image.GetFilename());
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
  if (image != nullptr) {
    SegmentImage(*image, method);
    return true;
  }
  Print("Processing.. this could take some time");
  for (const auto& each : database->GetImages()) {
    SegmentImage(*each, method);
  }
  Print("Processing done");
  return true;
}
