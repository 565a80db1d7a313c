#include "gui/to-qimage.h"

#include <algorithm>
#include <cstddef>

#include <QImage>

#include "images/image-rgb.h"

QImage ToQImage(const TImageRGB& picture) {
  QImage image(picture.GetWidth(), picture.GetHeight(), QImage::Format_RGB888);
  // The image's own height: without memory for its pixels the toolkit leaves a null image, whose height is 0. Row by
  // row, since a picture around a caller's memory may have rows of any length.
  for (int y = 0; y < image.height(); ++y) {
    std::copy_n(picture.GetPixels() + static_cast<std::ptrdiff_t>(y) * picture.GetStride(),
                static_cast<std::ptrdiff_t>(picture.GetWidth()) * 3, image.scanLine(y));
  }
  return image;
}
