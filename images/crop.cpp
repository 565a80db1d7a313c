#include "images/crop.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

struct TSpan {
  int start;
  int length;
};

/// The part of the span that lies in 0 to `limit`.
TSpan Clip(int start, int length, int limit) {
  // In 64 bits: a segment read from elsewhere may begin near the largest int, and the sum would wrap around to a
  // rectangle inside the picture.
  const std::int64_t end = std::min<std::int64_t>(static_cast<std::int64_t>(start) + length, limit);
  const int clippedStart = std::clamp(start, 0, limit);
  return {clippedStart, static_cast<int>(std::max<std::int64_t>(end - clippedStart, 0))};
}

struct TRectangle {
  TRectangle(const TPixelBuffer& image, int x, int y, int width, int height)
      : columns(Clip(x, width, image.GetWidth())), rows(Clip(y, height, image.GetHeight())) {
    // Nothing on either side is nothing at all: a crop of 0 x 40 would count as a picture with rows.
    if (columns.length == 0 || rows.length == 0) {
      columns.length = 0;
      rows.length = 0;
    }
  }

  TSpan columns;
  TSpan rows;
};

void CopyRows(const TPixelBuffer& image, const TRectangle& rectangle, int bytesPerPixel, TPixelBuffer& crop) {
  for (int row = 0; row < rectangle.rows.length; ++row) {
    const unsigned char* source = image.GetPixels() +
                                  static_cast<std::ptrdiff_t>(rectangle.rows.start + row) * image.GetStride() +
                                  static_cast<std::ptrdiff_t>(rectangle.columns.start) * bytesPerPixel;
    std::copy_n(source, static_cast<std::ptrdiff_t>(rectangle.columns.length) * bytesPerPixel,
                crop.GetPixels() + static_cast<std::ptrdiff_t>(row) * crop.GetStride());
  }
}

}  // namespace

void CropImage(const TImageRGB& image, int x, int y, int width, int height, TImageRGB& crop) {
  const TRectangle rectangle(image, x, y, width, height);
  // From here on `image` must be another picture: this may move or free the pixels of its own.
  crop.SetSizeToFill(rectangle.columns.length, rectangle.rows.length);
  CopyRows(image, rectangle, 3, crop);
}

void CropImage(const TImageGray& image, int x, int y, int width, int height, TImageGray& crop) {
  const TRectangle rectangle(image, x, y, width, height);
  crop.SetSizeToFill(rectangle.columns.length, rectangle.rows.length);
  CopyRows(image, rectangle, 1, crop);
}
