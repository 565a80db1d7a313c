#include "images/pixel-buffer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

TPixelBuffer::TPixelBuffer(unsigned char* data, int width, int height, int stride, int bytesPerPixel)
    : bytesPerPixel(bytesPerPixel),
      pixels(data),
      capacity(height * stride),
      width(width),
      height(height),
      stride(stride) {}

void TPixelBuffer::Release() {
  ownedPixels.reset();
  pixels = nullptr;
  capacity = 0;
}

void TPixelBuffer::Resize(int newWidth, int newHeight) {
  const std::int64_t rows = std::abs(static_cast<std::int64_t>(newHeight));
  if (pixels != nullptr && newWidth == width && rows == height) {
    return;
  }
  const std::int64_t alignedRow = (static_cast<std::int64_t>(newWidth) * bytesPerPixel + 3) & ~std::int64_t{3};
  if (newWidth < 0 || alignedRow * rows > std::numeric_limits<int>::max()) {
    Resize(0, 0);
    return;
  }
  const int size = static_cast<int>(alignedRow * rows);
  if (size > capacity) {
    Release();
  }
  width = newWidth;
  height = static_cast<int>(rows);
  stride = static_cast<int>(alignedRow);
  if (pixels == nullptr) {
    ownedPixels = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(size));
    pixels = ownedPixels.get();
    capacity = size;
  }
}

void TPixelBuffer::ClearPixels() {
  std::memset(pixels, 0, static_cast<std::size_t>(height) * static_cast<std::size_t>(stride));
}

void TPixelBuffer::SetSizeToFill(int newWidth, int newHeight) {
  Resize(newWidth, newHeight);
  const std::ptrdiff_t used = static_cast<std::ptrdiff_t>(width) * bytesPerPixel;
  for (int y = 0; y < height; ++y) {
    std::memset(pixels + static_cast<std::ptrdiff_t>(y) * stride + used, 0, static_cast<std::size_t>(stride - used));
  }
}

unsigned char* TPixelBuffer::PixelAt(int x, int y) {
  if (x < 0 || x >= width || y < 0 || y >= height) {
    return nullptr;
  }
  return pixels + static_cast<std::ptrdiff_t>(y) * stride + static_cast<std::ptrdiff_t>(x) * bytesPerPixel;
}
