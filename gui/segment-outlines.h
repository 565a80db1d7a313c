#pragma once

#include <string>
#include <vector>

#include "gui/picture-view.h"
#include "segmentation/image-segment.h"

class QImage;

/// Draws the outline of each segment: green if it carries a label, otherwise half transparent gray. Nothing on a null
/// image.
void DrawSegments(const TImageSegmentList& segments, QImage& canvas);

/// The picture of the file as a whole, which tells `text`, and its segments on top of it, each with a line for its
/// label and one for its place behind the text. Empty segments, which nobody can point at, are left out.
std::vector<TPictureItem> DescribeSegments(const TImageSegmentList& segments, const std::string& filename,
                                           const std::string& text);
