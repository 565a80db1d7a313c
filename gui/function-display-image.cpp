#include "gui/function-display-image.h"

#include <QImage>
#include <QPainter>

#include "gui/dialog-runner.h"
#include "gui/image-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/var-image.h"

namespace {

void DrawSegments(const TImageSegmentList& segments, QImage& canvas) {
  const QColor unlabelled(128, 128, 128, 128);
  const QColor labelled(0, 255, 0, 255);
  QPainter painter(&canvas);
  for (const auto& segment : segments) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    painter.setPen(rect.GetLabel().empty() ? unlabelled : labelled);
    painter.drawRect(rect.GetX(), rect.GetY(), rect.GetWidth() - 1, rect.GetHeight() - 1);
  }
}

}  // namespace

TFunctionDisplayImage::TFunctionDisplayImage()
    : TFunction({.name = "displayimage", .kinds = {"variable"}, .help = R"(
Name:        DisplayImage
Description: Displays a variable of type 'image'
Syntax:      displayimage(a)
Returns:     nothing
Parameters:  1 - 'image')"}) {}

bool TFunctionDisplayImage::Execute(const std::vector<std::string>& params) {
  const auto* image = FindVariable<TVarImage>(params[0]);
  if (image == nullptr) {
    Print("Parameter is not of type 'image'");
    return false;
  }
  TImageRGB picture;
  picture.LoadFromFile(image->GetFilename());
  QImage canvas = ToQImage(picture);
  if (!canvas.isNull()) {
    DrawSegments(image->GetSegments(), canvas);
  }
  TImageDisplay dialog;
  dialog.SetImage(canvas);
  RunDialog(dialog);
  return true;
}
