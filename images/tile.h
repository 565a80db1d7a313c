#pragma once

#include <string>

class TImageRGB;

/// Reads an image file and fills `tile` with it, scaled to the width with its proportions kept: height * width / its
/// own width, in integers. False if the file cannot be read or is so narrow that the tile would be higher than any
/// screen.
bool LoadTile(const std::string& filename, int width, TImageRGB& tile);
