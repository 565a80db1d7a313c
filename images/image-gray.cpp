#include "images/image-gray.h"

#include <algorithm>
#include <cstddef>

#include "images/image-rgb.h"
#include "kernels/resize-cubic.h"

TImageGray::TImageGray() : TPixelBuffer(1) {}

TImageGray::TImageGray(unsigned char* data, int width, int height, int stride)
    : TPixelBuffer(data, width, height, stride, 1) {}

void TImageGray::SetSize(int width, int height) {
  Resize(width, height);
  ClearPixels();
}

void TImageGray::SetPixel(int x, int y, unsigned char value) {
  if (unsigned char* pixel = PixelAt(x, y)) {
    *pixel = value;
  }
}

void TImageGray::ToRGB(TImageRGB& rgb) const {
  // The bytes behind each row are zeroed with the rest, so that equal pictures are equal byte by byte.
  rgb.SetSize(GetWidth(), GetHeight(), true);
  for (int y = 0; y < GetHeight(); ++y) {
    const unsigned char* source = GetPixels() + static_cast<std::ptrdiff_t>(y) * GetStride();
    unsigned char* destination = rgb.GetPixels() + static_cast<std::ptrdiff_t>(y) * rgb.GetStride();
    for (int x = 0; x < GetWidth(); ++x) {
      destination = std::fill_n(destination, 3, source[x]);
    }
  }
}

void TImageGray::CopyFrom(const TImageGray& other) {
  if (this == &other) {
    return;
  }
  SetSize(other.GetWidth(), other.GetHeight());
  // A wrapped picture may have longer rows than one of our own.
  for (int y = 0; y < GetHeight(); ++y) {
    std::copy_n(other.GetPixels() + static_cast<std::ptrdiff_t>(y) * other.GetStride(), GetWidth(),
                GetPixels() + static_cast<std::ptrdiff_t>(y) * GetStride());
  }
}

void TImageGray::ScaleTo(TImageGray& destination, int width, int height) const {
  // Zeroes the bytes behind the rows, which the kernel leaves alone, so that equal pictures are equal byte by byte.
  destination.SetSize(width, height);
  kernels::ResizeCubicGray(GetPixels(), GetStride(), GetWidth(), GetHeight(), destination.GetPixels(),
                           destination.GetStride(), destination.GetWidth(), destination.GetHeight());
}
