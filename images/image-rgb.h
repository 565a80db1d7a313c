#pragma once

#include <cstddef>
#include <string>

#include "images/pixel-buffer.h"

struct FIBITMAP;
class TImageGray;

/// A picture of 24-bit pixels: three bytes red, green, blue. Made by the operation that needs pixels, filled once, gone
/// with that operation.
class TImageRGB : public TPixelBuffer {
 public:
  /// An empty picture of 0 x 0.
  TImageRGB();
  /// Wraps the caller's memory of height * stride bytes, which must outlive the buffer.
  TImageRGB(unsigned char* data, int width, int height, int stride);

  /// Sets the dimensions, and zeroes all bytes if `clear`.
  void SetSize(int width, int height, bool clear);

  /// Writes one pixel; outside the picture nothing happens.
  void SetPixel(int x, int y, unsigned char red, unsigned char green, unsigned char blue);

  /// Decodes an image file of any format that can be told from its contents, or failing that from its name. False, and
  /// the buffer as it was, if there is no such file or it cannot be decoded.
  bool LoadFromFile(const std::string& path);

  /// The same for a file held in memory; without a name its contents alone must tell the format.
  bool LoadFromMemory(const unsigned char* data, std::size_t size, const std::string& name = {});

  /// Copies a bitmap of any kind: palettes and gray become colour, alpha goes, high dynamic range is tone-mapped. The
  /// caller keeps the bitmap. False, and the buffer as it was, for a bitmap that has no such form.
  bool CopyFromBitmap(FIBITMAP* bitmap);

  /// Encodes the picture into the file of exactly this name, in the format that the name asks for. Nothing happens if
  /// that format cannot be written.
  void SaveToFile(const std::string& path) const;

  /// Fills `gray` with the luma of each pixel.
  void ToGray(TImageGray& gray) const;

  /// Fills `destination` with a cubic resample of the whole picture, antialiased when shrinking. An empty picture gives
  /// zeroes.
  void ScaleTo(TImageRGB& destination, int width, int height) const;
};
