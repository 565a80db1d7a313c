#include "images/tile.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "images/image-rgb.h"
#include "tests/support/scratch-directory.h"
#include "tests/support/test-pictures.h"

namespace {

constexpr TColor kOlive = {100, 150, 50};

std::string SamplePhoto(int number) {
  return SAMPLES_DIRECTORY "/photos/im" + std::to_string(number) + ".jpg";
}

/// Writes the photograph, brought to that size, under that name.
void Enlarge(int number, int width, int height, const std::string& name) {
  TImageRGB photo;
  TImageRGB enlarged;
  ASSERT_TRUE(photo.LoadFromFile(SamplePhoto(number)));
  photo.ScaleTo(enlarged, width, height);
  enlarged.SaveToFile(name);
}

/// All levels of a picture, row by row.
std::vector<int> Levels(const TImageRGB& image) {
  std::vector<int> levels;
  for (int y = 0; y < image.GetHeight(); ++y) {
    const unsigned char* row = image.GetPixels() + static_cast<std::ptrdiff_t>(y) * image.GetStride();
    levels.insert(levels.end(), row, row + std::ptrdiff_t{3} * image.GetWidth());
  }
  return levels;
}

std::vector<int> TileLevels(const std::string& name, int width) {
  TImageRGB tile;
  EXPECT_TRUE(LoadTile(name, width, tile)) << name;
  EXPECT_EQ(tile.GetWidth(), width);
  return Levels(tile);
}

/// Those of the tile that the whole picture gives.
std::vector<int> FullTileLevels(const std::string& name, int width) {
  TImageRGB picture;
  TImageRGB tile;
  EXPECT_TRUE(picture.LoadFromFile(name)) << name;
  picture.ScaleTo(tile, width, picture.GetHeight() * width / picture.GetWidth());
  return Levels(tile);
}

}  // namespace

TEST(LoadTile, ProportionsAreKeptInWholeNumbers) {
  const TScratchDirectory scratch;
  // A picture, and the height of its tile.
  constexpr int kCases[][3] = {{40, 30, 75}, {30, 40, 133}, {3, 2, 66}, {1, 1, 100}, {400, 1, 0}, {1, 327, 32700}};
  for (const auto& [width, height, tileHeight] : kCases) {
    MakePicture("a.jpg", width, height, [](int, int) { return kOlive; });
    TImageRGB tile;
    ASSERT_TRUE(LoadTile("a.jpg", 100, tile)) << width << " x " << height;
    EXPECT_EQ(tile.GetWidth(), 100);
    EXPECT_EQ(tile.GetHeight(), tileHeight);
    std::vector<int> olive;
    for (int i = 0; i < 100 * tileHeight; ++i) {
      olive.insert(olive.end(), kOlive.begin(), kOlive.end());
    }
    EXPECT_EQ(Levels(tile), olive);
  }
}

TEST(LoadTile, UnreadableAndEndlesslyHighPicturesGiveNone) {
  const TScratchDirectory scratch;
  MakePicture("high.ppm", 1, 328, [](int, int) { return kOlive; });
  MakeFile("text.jpg", "words");
  TImageRGB tile;
  tile.SetSize(2, 2, true);
  tile.SetPixel(1, 1, 1, 2, 3);
  const std::vector<int> before = Levels(tile);
  for (const char* path : {"high.ppm", "text.jpg", "absent.jpg"}) {
    EXPECT_FALSE(LoadTile(path, 100, tile)) << path;
    EXPECT_EQ(Levels(tile), before) << path;
  }
}

TEST(LoadTile, OnlyAJpegFarLargerThanItsTileMayDiffer) {
  const TScratchDirectory scratch;
  // A tile of 20 x 15 or, upright, of 20 x 26.
  for (const std::string name : {"160x120.jpg", "163x125.jpg", "640x480.jpg", "160x213.jpg"}) {
    Enlarge(5, std::atoi(name.c_str()), std::atoi(name.c_str() + 4), name);
    EXPECT_NE(TileLevels(name, 20), FullTileLevels(name, 20)) << name;
  }
  for (const std::string name : {"159x120.jpg", "159x213.jpg", "640x480.png", "640x480.bmp"}) {
    Enlarge(5, std::atoi(name.c_str()), std::atoi(name.c_str() + 4), name);
    EXPECT_EQ(TileLevels(name, 20), FullTileLevels(name, 20)) << name;
  }
}

TEST(LoadTile, DiffersLittleFromTheTileOfTheWholePhotograph) {
  const TScratchDirectory scratch;
  for (const int width : {160, 120}) {
    double sum = 0.0;
    std::size_t count = 0;
    int largest = 0;
    for (int number = 1; number <= 110; number += 27) {
      const bool isUpright = number % 2 == 0;
      Enlarge(number, isUpright ? 3000 : 4000, isUpright ? 4000 : 3000, "large.jpg");
      const std::vector<int> full = FullTileLevels("large.jpg", width);
      const std::vector<int> tile = TileLevels("large.jpg", width);
      ASSERT_EQ(tile.size(), full.size());
      for (std::size_t i = 0; i < tile.size(); ++i) {
        sum += std::abs(tile[i] - full[i]);
        largest = std::max(largest, std::abs(tile[i] - full[i]));
      }
      count += tile.size();
    }
    EXPECT_LE(sum / static_cast<double>(count), 1.0);
    EXPECT_LE(largest, 16);
  }
}
