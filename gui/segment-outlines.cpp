#include "gui/segment-outlines.h"

#include <QImage>
#include <QPainter>

#include "base/format-string.h"

void DrawSegments(const TImageSegmentList& segments, QImage& canvas) {
  if (canvas.isNull()) {
    // A painter on it would complain on standard error.
    return;
  }
  // Half transparent, so that hundreds of them do not hide the picture.
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

std::vector<TPictureItem> DescribeSegments(const TImageSegmentList& segments, const std::string& filename,
                                           const std::string& text) {
  std::vector<TPictureItem> items = {{QRect(), filename, text}};
  for (const auto& segment : segments) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    const QRect place(rect.GetX(), rect.GetY(), rect.GetWidth(), rect.GetHeight());
    if (place.isEmpty()) {
      continue;
    }
    const std::string label = rect.GetLabel().empty() ? "No label" : "Label: " + rect.GetLabel();
    items.push_back(
        {place, filename,
         text + "\n" + label +
             FormatString("\nx %d, y %d, %d x %d pixels", place.x(), place.y(), place.width(), place.height())});
  }
  return items;
}
