#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "images/pixel-buffer.h"

struct FIBITMAP;
class TEncodedPicture;
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
  /// the buffer as it was, if there is no such file, if it cannot be decoded, or if its picture is too large: more than
  /// 2^28 pixels, or more than 2 GiB in the form that the decoder makes of it. The size is looked at before the pixels.
  ///
  /// Decoders that a damaged file can crash or drive into an endless loop run in a process apart, so that nothing but
  /// the picture is lost. Where the platform has no such processes, their formats cannot be decoded.
  bool LoadFromFile(const std::string& path);

  /// Does what LoadFromFile does up to the pixels, which stay as they were. False for a file whose beginning shows
  /// already that LoadFromFile would fail.
  bool ReadHeader(const std::string& path);

  /// True for a file that any decoder of its format may be given in this process: the format is one whose decoders
  /// stand damaged files, and the picture is neither too large nor out of all proportion to its file.
  static bool IsSafe(const std::string& path);

  /// True if the decoder reported damage in the file that was loaded last: a JPEG that was cut off, for one. What could
  /// be decoded is in the buffer.
  bool IsDamaged() const { return isDamaged; }

  /// Width and height of the picture that was too large to be loaded, if that was why the last one failed.
  const std::optional<std::pair<int, int>>& GetRefusedSize() const { return refusedSize; }

  /// The width and the height that a JPEG file gives its picture; 0 and 0 for a file that is no JPEG, cannot be read,
  /// or has to be decoded in a process apart.
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
  /// Decodes a picture at that part of its size, 1 for the whole; 0 stands for its header only.
  bool Load(TEncodedPicture& source, int divisor);
  /// The same in a process apart.
  bool LoadApart(TEncodedPicture& source, int divisor);

  bool isDamaged = false;
  std::optional<std::pair<int, int>> refusedSize;
};
