#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/shared-text.h"
#include "images/feature-vector-list.h"

/// A part of an image with feature vectors of its own. It holds no pixels: they are cut from the file when needed.
class TImageSegment {
 public:
  TImageSegment() = default;
  virtual ~TImageSegment() = default;
  TImageSegment(const TImageSegment&) = delete;
  TImageSegment& operator=(const TImageSegment&) = delete;

  /// Replaces the features by deep copies of the source's, in order. The label stays.
  virtual void Assign(const TImageSegment& source);

  /// A new segment of the same class with the same features and place, and an empty label.
  virtual std::unique_ptr<TImageSegment> Clone() const = 0;

  TFeatureVectorList& GetFeatures() { return features; }
  const TFeatureVectorList& GetFeatures() const { return features; }

  /// The name of the concept found on this segment; empty if none was.
  const std::string& GetLabel() const { return label.Get(); }
  void SetLabel(const std::string& newLabel) { label = newLabel; }

 private:
  TFeatureVectorList features;
  base::TSharedText label;
};

/// A rectangle of pixels, the only kind of segment. The origin is the image's top left corner.
class TImageSegmentRect : public TImageSegment {
 public:
  /// Copies the rectangle too, if the source has one.
  void Assign(const TImageSegment& source) override;
  std::unique_ptr<TImageSegment> Clone() const override;

  int GetX() const { return x; }
  void SetX(int value) { x = value; }
  int GetY() const { return y; }
  void SetY(int value) { y = value; }
  int GetWidth() const { return width; }
  void SetWidth(int value) { width = value; }
  int GetHeight() const { return height; }
  void SetHeight(int value) { height = value; }

 private:
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

using TImageSegmentList = std::vector<std::unique_ptr<TImageSegment>>;

/// Deletes the segments and empties the list.
void ClearSegments(TImageSegmentList& list);

/// Replaces the contents of `destination` by a clone of each segment of `source`, in order.
void CopySegments(TImageSegmentList& destination, const TImageSegmentList& source);
