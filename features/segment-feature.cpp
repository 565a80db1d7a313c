#include "features/segment-feature.h"

#include "features/feature.h"
#include "images/crop.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

/// Calls `process` with the segment's part of the picture, which is the picture itself if it covers all of it.
template <typename TImage, typename TProcess>
bool WithCrop(const TImage& picture, const TImageSegmentRect& rect, const TProcess& process) {
  // Saves the copy of a whole photograph.
  if (rect.GetX() == 0 && rect.GetY() == 0 && rect.GetWidth() == picture.GetWidth() &&
      rect.GetHeight() == picture.GetHeight()) {
    return process(picture);
  }
  TImage crop;
  CropImage(picture, rect.GetX(), rect.GetY(), rect.GetWidth(), rect.GetHeight(), crop);
  return process(crop);
}

}  // namespace

bool UpdateSegmentFeature(const TFeature& feature, const TImageRGB& color, const TImageGray& gray,
                          TImageSegment& segment) {
  const auto& rect = dynamic_cast<const TImageSegmentRect&>(segment);
  return segment.GetFeatures().Fill(feature.GetName(), [&](TFeatureVector& vector) {
    return feature.NeedsColor()
               ? WithCrop(color, rect, [&](const TImageRGB& crop) { return feature.ProcessColor(crop, vector); })
               : WithCrop(gray, rect, [&](const TImageGray& crop) { return feature.ProcessGrayscale(crop, vector); });
  });
}
