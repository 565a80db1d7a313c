#pragma once

#include <random>
#include <string>

#include "engine/var-list.h"
#include "images/image-rgb.h"

/// A picture of any size, laid out as a mosaic of the sample collection.
const TImageRGB& Mosaic(int width, int height);

/// A directory of `count` JPEG files of width x height, all the same mosaic, made on first use below the system's
/// directory for temporary files and left there for the next run. With a width of 0 the files are empty.
std::string PictureDirectory(int count, int width, int height);

/// The sample photographs from `first` to `last`, counted from 1, as a directory of their own beside those.
std::string SampleDirectory(int first, int last);

/// The working directory of the run from now on, below the directory for temporary files as well: commands write below
/// the working directory.
void EnterWorkDirectory();

/// A text as a parameter of a command.
std::string Quoted(const std::string& text);

/// A store with the database "db" of 100,000 images, with vectors "hsv" and "lbp" of 256 doubles on each, and the query
/// "q".
struct TCollection {
  TVarList store;
  /// The memory that the database takes, for each byte of its vectors.
  double bytesForEachByte = 0.0;
};

/// The numbers of images in the collection and of doubles in each of its vectors.
constexpr int kCollectionSize = 100000;
constexpr int kVectorLength = 256;

/// Made on first use.
TCollection& Collection();

/// A vector of kVectorLength positive numbers, in the size of a histogram's fractions.
void FillAtRandom(double* values, std::mt19937_64& random);
