#pragma once

#include <cstddef>
#include <string>
#include <utility>

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

  /// True if the decoder reported damage in the file that was loaded last: a JPEG that was cut off, for one. What could
  /// be decoded is in the buffer.
  bool IsDamaged() const { return isDamaged; }

  /// False for a file whose beginning shows already that LoadFromFile would fail.
  static bool IsReadable(const std::string& path);

  /// The width and the height that a JPEG file gives its picture; 0 and 0 for a file that is no JPEG or cannot be read.
  static std::pair<int, int> JpegSize(const std::string& path);

  /// Decodes a JPEG file at the given part of its width and height, rounded up: 2, 4 or 8 for a half, a quarter or an
  /// eighth. That leaves out most of the decoding, and the eye sees little difference. Fails as LoadFromFile does.
  bool LoadReduced(const std::string& path, int divisor);

  /// Decodes a file held in memory, as LoadFromFile does; without a name its contents alone must tell the format.
  bool LoadFromMemory(const unsigned char* data, std::size_t size, const std::string& name = {});

  /// Copies a bitmap of any kind: palettes and gray become color, alpha goes, high dynamic range is tone-mapped. The
  /// caller keeps the bitmap. False, and the buffer as it was, for a bitmap that has no such form.
  bool CopyFromBitmap(FIBITMAP* bitmap);

  /// Encodes the picture into the file of exactly this name, in the format that the name asks for. Nothing happens if
  /// that format cannot be written.
  void SaveToFile(const std::string& path) const;

  /// The bytes of a JPEG file of the picture, of quality 1 to 100; empty if it cannot be encoded.
  std::string EncodeJpeg(int quality) const;

  /// Fills `gray` with the luma of each pixel.
  void ToGray(TImageGray& gray) const;

  /// Fills `destination` with a cubic resample of the whole picture, antialiased when shrinking. An empty picture gives
  /// zeroes.
  void ScaleTo(TImageRGB& destination, int width, int height) const;

 private:
  /// Loads a file of a known format of the library, with its flags.
  bool Decode(const std::string& nativePath, int format, int flags);

  bool isDamaged = false;
};
