#pragma once

#include <string>

class TImageRGB;
class TPictureReport;

/// Reads an image file and fills `tile` with it, scaled to the width with its proportions kept: height * width / its
/// own width, in integers. False if the file cannot be read or is so narrow that the tile would be higher than a pixmap
/// can be. What is wrong with the file goes to the report, if there is one.
///
/// A JPEG of at least eight times the tile's width and height is decoded at a half, a quarter or an eighth of its size,
/// the smallest that leaves at least four times those of the tile. The levels of the tile then differ from those of the
/// whole picture's tile: by less than 1 on average, and by no more than 16 for photographs.
bool LoadTile(const std::string& filename, int width, TImageRGB& tile, TPictureReport* report = nullptr);

/// Reads an image file and fills `thumbnail` with it, its longer side scaled to `side` pixels at most; a smaller
/// picture keeps its size. Large JPEGs are decoded at a part of their size, as above. False if the file cannot be read.
bool LoadThumbnail(const std::string& filename, int side, TImageRGB& thumbnail);
