#pragma once

#include "images/pixel-buffer.h"

class TImageRGB;

/// A picture of 8-bit gray levels.
class TImageGray : public TPixelBuffer {
 public:
  /// An empty picture of 0 x 0.
  TImageGray();
  /// Wraps the caller's memory of height * stride bytes, which must outlive the buffer.
  TImageGray(unsigned char* data, int width, int height, int stride);

  /// Sets the dimensions and zeroes all bytes.
  void SetSize(int width, int height);

  /// Writes one pixel; outside the picture nothing happens.
  void SetPixel(int x, int y, unsigned char value);

  /// Fills `rgb` with the gray level in all three channels.
  void ToRGB(TImageRGB& rgb) const;

  void CopyFrom(const TImageGray& other);

  /// Fills `destination` with a cubic resample of the whole picture, antialiased when shrinking. An empty picture gives
  /// zeroes.
  void ScaleTo(TImageGray& destination, int width, int height) const;
};
