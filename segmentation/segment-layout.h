#pragma once

#include "segmentation/image-segment.h"
#include "segmentation/interest-points.h"

/// Appends the 64 cells of an 8 by 8 grid, row by row from the top left. They cover a picture of that size exactly;
/// where a side is under 8 pixels some are empty.
void AppendGridCells(int width, int height, TImageSegmentList& segments);

/// Appends the square of 30 by 30 pixels around a point, shifted to lie inside a picture of that size. A picture
/// narrower or lower than that gets a rectangle of its own width or height.
void AppendKeypointSquare(const TInterestPoint& point, int width, int height, TImageSegmentList& segments);
