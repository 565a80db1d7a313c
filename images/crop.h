#pragma once

class TImageGray;
class TImageRGB;

/// Fills `crop` with a copy of the rectangle of `image` that begins at x, y. What lies outside the picture is clipped
/// away, so the copy may be smaller than asked for, down to 0 x 0.
void CropImage(const TImageRGB& image, int x, int y, int width, int height, TImageRGB& crop);
void CropImage(const TImageGray& image, int x, int y, int width, int height, TImageGray& crop);
