#include "gui/commands.h"

#include <QImage>
#include <QPainter>

#include "base/format-string.h"
#include "engine/function.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/image-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/var-image.h"

namespace {

void DrawSegments(const TImageSegmentList& segments, QImage& canvas) {
  // Half transparent gray, which does not hide the picture; labelled segments stand out in green.
  const QColor unlabelled(128, 128, 128, 128);
  const QColor labelled(0, 255, 0, 255);
  QPainter painter(&canvas);
  for (const auto& segment : segments) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    painter.setPen(rect.GetLabel().empty() ? unlabelled : labelled);
    // The toolkit draws a rectangle one pixel larger than its size.
    painter.drawRect(rect.GetX(), rect.GetY(), rect.GetWidth() - 1, rect.GetHeight() - 1);
  }
}

/// The picture as a whole, and its segments on top of it.
std::vector<TPictureItem> DescribePicture(const TVarImage& image) {
  std::string text = image.GetFilename();
  if (!image.GetTags().empty()) {
    text += "\nTags: " + image.JoinTags(", ");
  }
  std::vector<TPictureItem> items = {{QRect(), image.GetFilename(), text}};
  for (const auto& segment : image.GetSegments()) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    const QRect place(rect.GetX(), rect.GetY(), rect.GetWidth(), rect.GetHeight());
    if (place.isEmpty()) {
      continue;
    }
    const std::string label = rect.GetLabel().empty() ? "No label" : "Label: " + rect.GetLabel();
    items.push_back(
        {place, image.GetFilename(),
         text + "\n" + label +
             FormatString("\nx %d, y %d, %d x %d pixels", place.x(), place.y(), place.width(), place.height())});
  }
  return items;
}

/// displayimage: shows an image and the outlines of its segments, in green those that carry a label.
class TFunctionDisplayImage : public TFunction {
 public:
  TFunctionDisplayImage()
      : TFunction({.name = "displayimage", .kinds = {"variable"}, .help = R"(
Name:        DisplayImage
Description: Displays a variable of type 'image'
Syntax:      displayimage(a)
Returns:     nothing
Parameters:  1 - 'image')"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* image = FindVariable<TVarImage>(params[0]);
    if (image == nullptr) {
      return Fail("Parameter is not of type 'image'");
    }
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    // Nobody would see the picture, and decoding it takes most of the time.
    if (!DialogsAreShown()) {
      report.Check(image->GetFilename());
      return true;
    }
    TImageRGB picture;
    report.Load(image->GetFilename(), picture);
    QImage canvas = ToQImage(picture);
    if (!canvas.isNull()) {
      DrawSegments(image->GetSegments(), canvas);
    }
    TImageDisplay dialog;
    dialog.SetImage(canvas, DescribePicture(*image));
    dialog.setAccessibleName(
        ToQString(FormatString("Image '%s', file '%s'", params[0].c_str(), image->GetFilename().c_str())));
    RunDialog(dialog);
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeDisplayImage() {
  return std::make_unique<TFunctionDisplayImage>();
}
