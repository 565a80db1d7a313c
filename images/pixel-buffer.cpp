#include "images/pixel-buffer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

TPixelBuffer::TPixelBuffer(unsigned char* data, int width, int height, int stride, int theBytesPerPixel)
    : bytesPerPixel(theBytesPerPixel),
      pixels(data),
      capacity(height * stride),
      columns(width),
      rows(height),
      pitch(stride) {}

void TPixelBuffer::Release() {
  ownedPixels.reset();
  pixels = nullptr;
  capacity = 0;
}

void TPixelBuffer::Resize(int newWidth, int newHeight) {
  // Bitmaps that begin with their top row are known by a negative height; only the magnitude is a size. In 64 bits the
  // smallest int has a magnitude, too.
  const std::int64_t height = std::abs(static_cast<std::int64_t>(newHeight));
  if (pixels != nullptr && newWidth == columns && height == rows) {
    return;
  }
  // Rows begin at multiples of 4 bytes, as feature plug-ins have been promised. In 64 bits, since width * 3 may exceed
  // 32.
  const std::int64_t alignedRow = (static_cast<std::int64_t>(newWidth) * bytesPerPixel + 3) & ~std::int64_t{3};
  // By division: the product of two sides near 2^31 has no room in 64 bits once a pixel has three bytes.
  if (newWidth < 0 || (height > 0 && alignedRow > std::numeric_limits<int>::max() / height)) {
    Resize(0, 0);
    return;
  }
  const int size = static_cast<int>(alignedRow * height);
  // A smaller picture keeps the block: a command that crops thousands of segments out of one photograph asks for memory
  // a few times only.
  if (size > capacity) {
    // The old block goes first, so that a photograph that follows another needs memory for one. Without memory for the
    // new one the picture is left as 0 x 0.
    Release();
    columns = 0;
    rows = 0;
    pitch = 0;
  }
  if (pixels == nullptr) {
    ownedPixels = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(size));
    pixels = ownedPixels.get();
    capacity = size;
  }
  columns = newWidth;
  rows = static_cast<int>(height);
  pitch = static_cast<int>(alignedRow);
}

void TPixelBuffer::ClearPixels() {
  std::memset(pixels, 0, static_cast<std::size_t>(rows) * static_cast<std::size_t>(pitch));
}

void TPixelBuffer::SetSizeToFill(int newWidth, int newHeight) {
  Resize(newWidth, newHeight);
  const std::ptrdiff_t used = static_cast<std::ptrdiff_t>(columns) * bytesPerPixel;
  for (int y = 0; y < rows; ++y) {
    std::memset(pixels + static_cast<std::ptrdiff_t>(y) * pitch + used, 0, static_cast<std::size_t>(pitch - used));
  }
}

unsigned char* TPixelBuffer::PixelAt(int x, int y) {
  if (x < 0 || x >= columns || y < 0 || y >= rows) {
    return nullptr;
  }
  return pixels + static_cast<std::ptrdiff_t>(y) * pitch + static_cast<std::ptrdiff_t>(x) * bytesPerPixel;
}
