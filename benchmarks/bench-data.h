#pragma once

#include <string>

#include "images/image-rgb.h"

/// A picture of any size, laid out as a mosaic of the sample collection.
const TImageRGB& Mosaic(int width, int height);

/// A directory of `count` JPEG files of width x height, all the same mosaic, made on first use below the system's
/// directory for temporary files and left there for the next run. With a width of 0 the files are empty.
std::string PictureDirectory(int count, int width, int height);
