#pragma once

#include <compare>
#include <memory>
#include <random>
#include <string>

#include "engine/var-list.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

/// A picture of any size, laid out as a mosaic of the sample collection.
const TImageRGB& Mosaic(int width, int height);

/// The mosaic of 640 x 480, and its gray plane.
const TImageRGB& SmallColor();
const TImageGray& SmallGray();

/// A directory of `count` JPEG files of width x height, all the same mosaic, made on first use below the system's
/// directory for temporary files and left there for the next run. With a width of 0 the files are empty.
std::string PictureDirectory(int count, int width, int height);

/// False if the file system has no room for a directory of so many empty files, which is not there yet.
bool HasRoomForEmptyFiles(int count);

/// The sample photographs from `first` to `last`, counted from 1, as a directory of their own beside those.
std::string SampleDirectory(int first, int last);

/// Those photographs without the left and the upper sixteenth.
std::string CutSampleDirectory(int first, int last);

/// Those photographs enlarged to 4000 x 3000, whatever their own proportions.
std::string EnlargedSampleDirectory(int first, int last);

/// The working directory of the run from now on, of that name below the directory for temporary files: commands write
/// below the working directory.
void EnterWorkDirectory(const std::string& name = "work");

/// A text as a parameter of a command.
std::string Quoted(const std::string& text);

/// The numbers of images in the collection that most benches use, and of doubles in each of its vectors.
constexpr int kCollectionSize = 100000;
constexpr int kVectorLength = 256;

struct TCollectionKind {
  int images = kCollectionSize;
  int features = 2;
  int length = kVectorLength;
  std::strong_ordering operator<=>(const TCollectionKind&) const = default;
};

/// A store with the database "db", with vectors "hsv" or "hsv" and "lbp" on each image, and the query "q".
struct TCollection {
  TVarList store;
  /// The memory that the database takes, for each byte of its vectors.
  double bytesForEachByte = 0.0;
};

/// Made on first use.
TCollection& Collection(const TCollectionKind& kind = {});

/// A database "db" of the files of a directory, in a store of its own.
std::unique_ptr<TVarList> DatabaseStore(const std::string& location);

/// Positive numbers in the size of a histogram's fractions.
void FillAtRandom(double* values, int length, std::mt19937_64& random);
