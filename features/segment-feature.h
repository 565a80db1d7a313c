#pragma once

#include "segmentation/image-segment.h"

class TFeature;
class TImageGray;
class TImageRGB;

/// Leaves the feature's vector of a segment's part of a picture on the segment, in place of an earlier one. The segment
/// is a rectangle; `gray` is the picture's gray plane, and may be empty if the feature does not need it. False, and no
/// vector is added, if the feature cannot say how long its vector is.
bool UpdateSegmentFeature(const TFeature& feature, const TImageRGB& color, const TImageGray& gray,
                          TImageSegment& segment);
