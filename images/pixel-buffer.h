#pragma once

#include <cstddef>
#include <memory>

/// Storage of a picture: rows from top to bottom, row y at pixels + y * stride, rows aligned to 4 bytes. A buffer owns
/// what it allocates; a buffer made around the caller's memory never frees it. Sizes are in pixels, strides and
/// capacities in bytes.
class TPixelBuffer {
 public:
  TPixelBuffer(const TPixelBuffer&) = delete;
  TPixelBuffer& operator=(const TPixelBuffer&) = delete;

  unsigned char* GetPixels() { return pixels; }
  const unsigned char* GetPixels() const { return pixels; }
  int GetWidth() const { return columns; }
  int GetHeight() const { return rows; }
  int GetStride() const { return pitch; }

  /// Frees the pixels, or only drops the pointer to the caller's. The dimensions stay.
  void Release();

  /// Sets the dimensions for whoever writes every pixel next: only the bytes behind the rows are zeroed.
  void SetSizeToFill(int newWidth, int newHeight);

 protected:
  explicit TPixelBuffer(int theBytesPerPixel) : bytesPerPixel(theBytesPerPixel) {}
  TPixelBuffer(unsigned char* data, int width, int height, int stride, int bytesPerPixel);
  ~TPixelBuffer() = default;

  /// Sets dimensions and storage; a negative height counts by its magnitude. The dimensions that it has change nothing,
  /// so that a wrapped picture keeps its stride. A block that is large enough stays in use: storage never shrinks. The
  /// bytes are what they were. A picture of 2^31 bytes or more gives 0 x 0.
  void Resize(int newWidth, int newHeight);

  /// Zeroes height * stride bytes.
  void ClearPixels();

  /// The first byte of a pixel, or null outside the picture.
  unsigned char* PixelAt(int x, int y);

 private:
  int bytesPerPixel;
  /// Set if the buffer allocated `pixels`.
  std::unique_ptr<unsigned char[]> ownedPixels;
  unsigned char* pixels = nullptr;
  int capacity = 0;
  /// Under names of their own, so that derived classes can call an argument `width`.
  int columns = 0;
  int rows = 0;
  int pitch = 0;
};
