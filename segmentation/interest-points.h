#pragma once

#include <cstdint>
#include <vector>

class TImageRGB;

/// A pixel of an image that stands out.
struct TInterestPoint {
  std::int32_t x;
  std::int32_t y;
};

/// Base of all ways to find such pixels.
class TInterestPoints {
 public:
  TInterestPoints() = default;
  virtual ~TInterestPoints() = default;
  TInterestPoints(const TInterestPoints&) = delete;
  TInterestPoints& operator=(const TInterestPoints&) = delete;

  /// Replaces `points` by those of the image, in the order in which they are found.
  virtual void Detect(const TImageRGB& image, std::vector<TInterestPoint>& points) const = 0;
};
