#include "images/image-rgb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <FreeImage.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "images/crop.h"
#include "images/image-gray.h"
#include "tests/support/scratch-directory.h"
#include "tests/support/test-pictures.h"

namespace {

using TColors = std::vector<TColor>;

constexpr TColor kRed = {255, 0, 0};
constexpr TColor kGreen = {0, 255, 0};
constexpr TColor kBlue = {0, 0, 255};
constexpr TColor kOlive = {100, 150, 50};

/// A different color for every pixel of a small picture.
TColor Pattern(int x, int y) {
  return {static_cast<unsigned char>(10 + 16 * x), static_cast<unsigned char>(20 + 16 * y),
          static_cast<unsigned char>(x * y)};
}

std::size_t Index(int index) {
  return static_cast<std::size_t>(index);
}

TColor Gray(int level) {
  const auto byte = static_cast<unsigned char>(level);
  return {byte, byte, byte};
}

/// The pixels in reading order.
TColors Pixels(const TImageRGB& image) {
  TColors pixels;
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      const unsigned char* pixel = image.GetPixels() + std::ptrdiff_t{y} * image.GetStride() + std::ptrdiff_t{3} * x;
      pixels.push_back({pixel[0], pixel[1], pixel[2]});
    }
  }
  return pixels;
}

std::vector<int> Levels(const TImageGray& image) {
  std::vector<int> levels;
  for (int y = 0; y < image.GetHeight(); ++y) {
    const unsigned char* row = image.GetPixels() + std::ptrdiff_t{y} * image.GetStride();
    levels.insert(levels.end(), row, row + image.GetWidth());
  }
  return levels;
}

TColors PatternPixels(int width, int height) {
  TColors pixels;
  for (int i = 0; i < width * height; ++i) {
    pixels.push_back(Pattern(i % width, i / width));
  }
  return pixels;
}

/// Fills the picture with these pixels, in reading order.
void Fill(TImageRGB& image, int width, int height, const TColors& pixels) {
  image.SetSize(width, height, true);
  for (int i = 0; i < width * height; ++i) {
    const auto& [red, green, blue] = pixels[static_cast<std::size_t>(i)];
    image.SetPixel(i % width, i / width, red, green, blue);
  }
}

void FillPattern(TImageRGB& image, int width, int height) {
  Fill(image, width, height, PatternPixels(width, height));
}

/// Loads a file and expects these pixels in reading order.
void ExpectFile(const std::string& path, int width, int height, const TColors& pixels) {
  TImageRGB image;
  ASSERT_TRUE(image.LoadFromFile(path)) << path;
  EXPECT_EQ(image.GetWidth(), width) << path;
  EXPECT_EQ(image.GetHeight(), height) << path;
  EXPECT_EQ(image.GetStride(), (3 * width + 3) / 4 * 4) << path;
  EXPECT_EQ(Pixels(image), pixels) << path;
}

/// Writes a file in which the sample `index` of row `y`, counted from the top, is what `sample` says.
template <typename TSample>
void WriteBitmap(const std::string& path, FREE_IMAGE_FORMAT format, FREE_IMAGE_TYPE type, int width, int height,
                 int bits, int samplesPerPixel, const std::function<TSample(int index, int y)>& sample) {
  const std::unique_ptr<FIBITMAP, decltype(&FreeImage_Unload)> bitmap(FreeImage_AllocateT(type, width, height, bits),
                                                                      &FreeImage_Unload);
  ASSERT_TRUE(bitmap);
  for (int y = 0; y < height; ++y) {
    auto* row = reinterpret_cast<TSample*>(FreeImage_GetScanLine(bitmap.get(), height - 1 - y));
    for (int i = 0; i < width * samplesPerPixel; ++i) {
      row[i] = sample(i, y);
    }
  }
  ASSERT_TRUE(FreeImage_Save(format, bitmap.get(), path.c_str(), 0)) << path;
}

}  // namespace

TEST(TImageRGB, RowsAreAlignedToFourBytes) {
  const std::vector<std::array<int, 3>> cases = {{0, 0, 0},  {1, 4, 4},  {2, 8, 4},  {3, 12, 4},
                                                 {4, 12, 4}, {5, 16, 8}, {8, 24, 8}, {9, 28, 12}};
  for (const auto& [width, stride, grayStride] : cases) {
    TImageRGB image;
    image.SetSize(width, -2, true);
    EXPECT_EQ(image.GetStride(), stride);
    EXPECT_EQ(image.GetHeight(), 2) << "a height is a magnitude";
    TImageGray gray;
    gray.SetSize(width, -2);
    EXPECT_EQ(gray.GetStride(), grayStride);
    EXPECT_EQ(gray.GetHeight(), 2);
  }
}

TEST(TImageRGB, StorageIsReusedNeverShrinksAndIsMadeAnewWhenReleased) {
  TImageRGB image;
  FillPattern(image, 4, 3);
  const unsigned char* block = image.GetPixels();
  image.SetSize(4, 3, false);
  EXPECT_EQ(Pixels(image), PatternPixels(4, 3));
  image.SetSize(1, 2, false);
  EXPECT_EQ(image.GetPixels(), block);
  image.SetSize(3, -3, true);
  EXPECT_EQ(image.GetPixels(), block);
  EXPECT_EQ(Pixels(image), TColors(9, TColor{}));
  image.SetSize(100, 100, true);
  EXPECT_EQ(Pixels(image), TColors(10000, TColor{}));
  FillPattern(image, 4, 3);
  image.Release();
  EXPECT_EQ(image.GetPixels(), nullptr);
  EXPECT_EQ(image.GetWidth(), 4);
  image.SetSize(4, 3, true);
  EXPECT_EQ(Pixels(image), TColors(12, TColor{}));
  for (const auto& [width, height] :
       {std::pair(40000, 40000), std::pair(-1, 5), std::pair(1 << 30, 1), std::pair(INT32_MAX, INT32_MIN)}) {
    FillPattern(image, 2, 2);
    image.SetSize(width, height, true);
    EXPECT_EQ(std::pair(image.GetWidth(), image.GetHeight()), std::pair(0, 0)) << "larger than any picture";
  }
  TImageGray gray;
  gray.SetSize(5, 2);
  gray.Release();
  gray.SetSize(5, 2);
  EXPECT_EQ(Levels(gray), std::vector<int>(10, 0));
}

TEST(TImageRGB, PixelsOutsideAreIgnored) {
  TImageRGB image;
  image.SetSize(3, 2, true);
  TImageGray gray;
  gray.SetSize(3, 2);
  for (const auto& [x, y] : {std::pair(-1, 0), std::pair(3, 0), std::pair(0, -1), std::pair(0, 2)}) {
    image.SetPixel(x, y, 1, 2, 3);
    gray.SetPixel(x, y, 1);
  }
  const std::vector<unsigned char> zeros(24, 0);
  EXPECT_EQ(std::memcmp(image.GetPixels(), zeros.data(), 24), 0);
  EXPECT_EQ(std::memcmp(gray.GetPixels(), zeros.data(), 8), 0);
  TImageRGB().SetPixel(0, 0, 1, 2, 3);
}

TEST(TImageRGB, WrappedMemoryStaysTheCallersAndKeepsItsForm) {
  // Two rows of two pixels, ten bytes apart.
  std::vector<unsigned char> bytes(20);
  std::iota(bytes.begin(), bytes.end(), 0);
  TImageRGB image(bytes.data(), 2, 2, 10);
  const TColors pixels = {{0, 1, 2}, {3, 4, 5}, {10, 11, 12}, {13, 14, 15}};
  EXPECT_EQ(Pixels(image), pixels);
  image.SetSize(2, -2, false);
  EXPECT_EQ(image.GetStride(), 10);
  EXPECT_EQ(Pixels(image), pixels) << "equal dimensions change nothing";
  image.SetPixel(1, 1, 7, 8, 9);
  EXPECT_EQ(bytes[13], 7);
  image.SetSize(100, 100, true);
  EXPECT_EQ(bytes[13], 7) << "a picture that does not fit has memory of its own";
  TImageRGB forgotten(bytes.data(), 2, 2, 10);
  forgotten.Release();
  EXPECT_EQ(forgotten.GetPixels(), nullptr);
}

TEST(TImageRGB, FilesOfEveryDepthBecomeColorWithTheTopRowFirst) {
  const TScratchDirectory scratch;
  const TColors pixels = {kRed, kGreen, kBlue, kOlive, Gray(0), Gray(255)};
  const auto sampleOf = [&pixels](int index, int y, int samples) {
    // Bitmaps hold blue, green, red and, where there is one, alpha.
    return index % samples == 3 ? 40 : int{pixels[Index(3 * y + index / samples)][2 - index % samples]};
  };
  MakePicture("24.ppm", 3, 2, [&pixels](int x, int y) { return pixels[Index(3 * y + x)]; });
  WriteBitmap<BYTE>("24.png", FIF_PNG, FIT_BITMAP, 3, 2, 24, 3, [&](int i, int y) { return sampleOf(i, y, 3); });
  WriteBitmap<BYTE>("32.png", FIF_PNG, FIT_BITMAP, 3, 2, 32, 4, [&](int i, int y) { return sampleOf(i, y, 4); });
  // 16-bit colors hold red first.
  WriteBitmap<WORD>("48.png", FIF_PNG, FIT_RGB16, 3, 2, 48, 3, [&pixels](int i, int y) {
    return static_cast<WORD>(257 * pixels[Index(3 * y + i / 3)][Index(i % 3)]);
  });
  for (const char* file : {"24.ppm", "24.png", "32.png", "48.png"}) {
    ExpectFile(file, 3, 2, pixels);
  }

  const std::unique_ptr<FIBITMAP, decltype(&FreeImage_Unload)> palette(FreeImage_Allocate(3, 2, 8), &FreeImage_Unload);
  for (int i = 0; i < 6; ++i) {
    const TColor color = pixels[static_cast<std::size_t>(i)];
    FreeImage_GetPalette(palette.get())[100 + i] = RGBQUAD{color[2], color[1], color[0], 0};
    FreeImage_GetScanLine(palette.get(), 1 - i / 3)[i % 3] = static_cast<BYTE>(100 + i);
  }
  ASSERT_TRUE(FreeImage_Save(FIF_GIF, palette.get(), "palette.gif", 0));
  ExpectFile("palette.gif", 3, 2, pixels);

  MakeFile("gray.pgm", "P5 2 2 255\n" + std::string("\x00\x7f\x80\xff", 4));
  ExpectFile("gray.pgm", 2, 2, {Gray(0), Gray(127), Gray(128), Gray(255)});
  // A set bit is black.
  MakeFile("bits.pbm", "P1 2 1\n1 0\n");
  ExpectFile("bits.pbm", 2, 1, {Gray(0), Gray(255)});
}

TEST(TImageRGB, SixteenBitGrayKeepsItsLevelsHoweverFewItUses) {
  const TScratchDirectory scratch;
  const std::vector<std::vector<int>> pictures = {{0, 255, 128, 1}, {10, 20, 30, 40}, {77, 77, 77, 77}};
  for (const std::vector<int>& levels : pictures) {
    const auto sample = [&levels](int i, int y) { return static_cast<WORD>(257 * levels[Index(2 * y + i)]); };
    TColors expected(4);
    std::transform(levels.begin(), levels.end(), expected.begin(), Gray);
    WriteBitmap<WORD>("gray16.png", FIF_PNG, FIT_UINT16, 2, 2, 16, 1, sample);
    ExpectFile("gray16.png", 2, 2, expected);
    WriteBitmap<WORD>("gray16.tif", FIF_TIFF, FIT_UINT16, 2, 2, 16, 1, sample);
    ExpectFile("gray16.tif", 2, 2, expected);
  }
}

/// A bitmap that somebody else decoded comes out as the file does.
void ExpectCopy(const char* file) {
  const std::unique_ptr<FIBITMAP, decltype(&FreeImage_Unload)> bitmap(
      FreeImage_Load(FreeImage_GetFileType(file, 0), file, 0), FreeImage_Unload);
  TImageRGB loaded;
  TImageRGB copied;
  EXPECT_TRUE(loaded.LoadFromFile(file) && copied.CopyFromBitmap(bitmap.get())) << file;
  EXPECT_EQ(Pixels(copied), Pixels(loaded)) << file;
}

TEST(TImageRGB, FloatingPointFilesAreBroughtIntoRange) {
  const TScratchDirectory scratch;
  // Gray of no given range is stretched from the darkest to the brightest.
  WriteBitmap<float>("gray.tif", FIF_TIFF, FIT_FLOAT, 3, 1, 32, 1, [](int i, int) {
    return std::array{-1.0F, 4.0F, 0.0F}[static_cast<std::size_t>(i)];
  });
  ExpectFile("gray.tif", 3, 1, {Gray(0), Gray(255), Gray(51)});
  ExpectCopy("gray.tif");

  // High dynamic range is tone-mapped: a blue floor 100 times as bright as the red sky over it, gray at the right.
  const auto sample = [](int i, int y) {
    const float brightness = y == 0 ? 1.0F : 100.0F;
    return i >= 3 || i == (y == 0 ? 0 : 2) ? brightness : 0.1F * brightness;
  };
  WriteBitmap<float>("color.hdr", FIF_HDR, FIT_RGBF, 2, 2, 96, 3, sample);
  WriteBitmap<float>("color.exr", FIF_EXR, FIT_RGBF, 2, 2, 96, 3, sample);
  const auto sampleWithAlpha = [&sample](int i, int y) { return i % 4 == 3 ? 0.5F : sample(i / 4 * 3 + i % 4, y); };
  WriteBitmap<float>("alpha.tif", FIF_TIFF, FIT_RGBAF, 2, 2, 128, 4, sampleWithAlpha);
  WriteBitmap<float>("alpha.exr", FIF_EXR, FIT_RGBAF, 2, 2, 128, 4, sampleWithAlpha);
  for (const char* file : {"color.hdr", "color.exr", "alpha.tif", "alpha.exr"}) {
    TImageRGB image;
    ASSERT_TRUE(image.LoadFromFile(file)) << file;
    ASSERT_EQ(image.GetWidth(), 2) << file;
    ASSERT_EQ(image.GetHeight(), 2) << file;
    const TColors pixels = Pixels(image);
    EXPECT_GT(pixels[0][0], pixels[0][2]) << file << ": the top left is red";
    EXPECT_LT(pixels[2][0], pixels[2][2]) << file << ": the bottom left is blue";
    EXPECT_LT(pixels[1][1], pixels[3][1]) << file << ": the bottom is brighter";
    EXPECT_EQ(pixels[3][0], pixels[3][2]) << file << ": gray stays gray";
    ExpectCopy(file);
  }

  WriteBitmap<float>("black.hdr", FIF_HDR, FIT_RGBF, 2, 1, 96, 3, [](int, int) { return 0.0F; });
  ExpectFile("black.hdr", 2, 1, {Gray(0), Gray(0)});
}

TEST(TImageRGB, TheContentsTellTheFormatAndTheNameOnlyWhereTheyDoNot) {
  const TScratchDirectory scratch;
  TImageRGB image;
  FillPattern(image, 5, 3);
  image.SaveToFile("real.png");
  for (const char* name : {"png.jpg", "png.txt", "png", "Caf\xc3\xa9, 1.GIF"}) {
    std::filesystem::copy_file("real.png", name);
    ExpectFile(name, 5, 3, PatternPixels(5, 3));
  }
  ExpectFile("caf\xc3\xa9, 1.gif", 5, 3, PatternPixels(5, 3));
  // Nothing in this format says what it is: two bytes of width, two of height, one bit a pixel. Only its name tells.
  MakeFile("bits.wbmp", std::string("\0\0\2\1\x80", 5));
  ExpectFile("bits.wbmp", 2, 1, {Gray(255), Gray(0)});
}

TEST(TImageRGB, WhatIsNoImageLeavesTheBufferAsItWas) {
  const TScratchDirectory scratch;
  MakeFile("text.jpg", "no picture, only words that are long enough to look for a header in\n");
  MakeFile("empty.jpg", "");
  MakeFile("text.xyz", "words");
  MakeFile("header.png", "\x89PNG\r\n\x1a\n");
  MakeFile("short.ppm", "P6 100 100 255\nabc");
  std::filesystem::create_directory("directory.jpg");
  ASSERT_EQ(mkfifo("pipe.jpg", 0600), 0);
  TImageRGB image;
  FillPattern(image, 2, 2);
  for (const char* path :
       {"text.jpg", "empty.jpg", "text.xyz", "header.png", "directory.jpg", "absent.jpg", "", "pipe.jpg"}) {
    EXPECT_FALSE(image.LoadFromFile(path)) << path;
    EXPECT_EQ(Pixels(image), PatternPixels(2, 2)) << path;
  }
  const std::string text = "no picture";
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  EXPECT_FALSE(image.LoadFromMemory(bytes, text.size()));
  EXPECT_FALSE(image.LoadFromMemory(bytes, text.size(), "text.jpg"));
  EXPECT_FALSE(image.LoadFromMemory(bytes, 0));
  EXPECT_FALSE(image.LoadFromMemory(nullptr, 0));
  EXPECT_EQ(Pixels(image), PatternPixels(2, 2));

  // Headers that end anywhere: a GIF's to the end of its first frame's, behind a palette and an extension, and a PNM's
  // up to the second number.
  const std::string gif = std::string("GIF89a\1\0\1\0\x80\0\0\0\0\0\xff\xff\xff", 19) +
                          std::string("!\xf9\4\0\0\0\0\0,\0\0\0\0\1\0\1\0", 17);
  for (const std::string& header : {gif, std::string("P5 # one 1\n")}) {
    for (std::size_t length = 0; length <= header.size(); ++length) {
      EXPECT_FALSE(image.LoadFromMemory(reinterpret_cast<const unsigned char*>(header.data()), length)) << length;
    }
  }
  TImageRGB black;
  const std::string whole = gif + std::string("\0\2\2\x44\1\0;", 7);
  ASSERT_TRUE(black.LoadFromMemory(reinterpret_cast<const unsigned char*>(whole.data()), whole.size()));
  EXPECT_EQ(Pixels(black), TColors{Gray(0)});
}

TEST(TImageRGB, ATruncatedJpegGivesItsUpperPartOrNothing) {
  const TScratchDirectory scratch;
  // Stripes of 16 rows, gray and distinct.
  MakePicture("stripes.ppm", 64, 256, [](int, int y) { return Gray(y / 16 * 15); });
  TImageRGB whole;
  ASSERT_TRUE(whole.LoadFromFile("stripes.ppm"));
  whole.SaveToFile("whole.jpg");
  const std::string bytes = FileBytes("whole.jpg");
  ASSERT_GT(bytes.size(), 700u);

  MakeFile("cut.jpg", bytes.substr(0, 40));
  TImageRGB image;
  EXPECT_FALSE(image.LoadFromFile("cut.jpg")) << "cut within the header";
  EXPECT_EQ(image.GetHeight(), 0);

  MakeFile("cut.jpg", bytes.substr(0, bytes.size() - 100));
  ASSERT_TRUE(image.LoadFromFile("cut.jpg"));
  ASSERT_EQ(image.GetWidth(), 64);
  ASSERT_EQ(image.GetHeight(), 256);
  for (int y = 0; y < 48; ++y) {
    EXPECT_NEAR(image.GetPixels()[y * image.GetStride() + 96], std::floor(y / 16.0) * 15, 6) << "row " << y;
  }
  EXPECT_TRUE(image.IsDamaged());
  EXPECT_TRUE(image.LoadFromFile("whole.jpg") && !image.IsDamaged());

  // What stands in the header or behind the end costs no pixel.
  const std::size_t behindHeader = 20;
  ASSERT_EQ(bytes.substr(6, 5), std::string("JFIF\0", 5));
  const std::string profile = std::string("\xff\xe2\x00\x14", 4) + std::string("ICC_PROFILE\0\x01\x02late", 18);
  const std::string extension = std::string("\xff\xe0\x00\x08JFXX\0\x44", 10);
  for (const std::string& odd : {bytes + "more", bytes.substr(0, 11) + '\x09' + bytes.substr(12),
                                 bytes.substr(0, behindHeader) + profile + bytes.substr(behindHeader),
                                 bytes.substr(0, behindHeader) + extension + bytes.substr(behindHeader)}) {
    MakeFile("odd.jpg", odd);
    EXPECT_TRUE(image.LoadFromFile("odd.jpg") && !image.IsDamaged()) << odd.substr(0, 60);
  }
}

TEST(TImageRGB, APictureWithoutMarksThatIsCutOffIsDamagedAndBlackBehindItsEnd) {
  const TScratchDirectory scratch;
  const std::string whole = "P6\n2 2\n255\nabcdefghijkl";
  MakeFile("whole.jpg", whole);
  MakeFile("cut.jpg", whole.substr(0, whole.size() - 3));
  TImageRGB image;
  ASSERT_TRUE(image.LoadFromFile("whole.jpg"));
  EXPECT_FALSE(image.IsDamaged());
  const TColors pixels = Pixels(image);
  ASSERT_TRUE(image.LoadFromFile("cut.jpg"));
  EXPECT_TRUE(image.IsDamaged());
  EXPECT_EQ(Pixels(image), (TColors{pixels[0], pixels[1], pixels[2], Gray(0)}));
}

TEST(TImageRGB, WhatIsSavedLosslesslyComesBackFromFileAndMemory) {
  const TScratchDirectory scratch;
  TImageRGB image;
  FillPattern(image, 7, 5);
  for (const std::string name : {"a.png", "B.BMP", "c d\xc3\xa9.tif", "e.ppm"}) {
    image.SaveToFile(name);
    ExpectFile(name, 7, 5, PatternPixels(7, 5));
    const std::string bytes = FileBytes(name);
    TImageRGB fromMemory;
    EXPECT_TRUE(fromMemory.LoadFromMemory(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
    EXPECT_EQ(fromMemory.GetWidth(), 7) << name;
    EXPECT_EQ(Pixels(fromMemory), PatternPixels(7, 5)) << name;
  }
}

TEST(TImageRGB, SavingWritesOnlyWhatItCanUnderTheExactName) {
  const TScratchDirectory scratch;
  TImageRGB image;
  FillPattern(image, 2, 2);
  image.SaveToFile("Chart.png");
  const std::string before = FileBytes("Chart.png");
  FillPattern(image, 3, 3);
  image.SaveToFile("chart.png");
  EXPECT_EQ(FileBytes("Chart.png"), before) << "a file that is only spelt like it is not overwritten";
  ExpectFile("chart.png", 3, 3, PatternPixels(3, 3));
  image.SaveToFile("no-ending");
  image.SaveToFile("unknown.xyz");
  image.SaveToFile("absent/a.png");
  TImageRGB().SaveToFile("nothing.png");
  for (const char* name : {"no-ending", "unknown.xyz", "absent", "nothing.png"}) {
    EXPECT_FALSE(std::filesystem::exists(name)) << name;
  }
}

TEST(TImageRGB, GrayIsTheWeightedSumOfTheChannels) {
  // (19595 R + 38470 G + 7471 B + 32768) / 65536, cut: red (4996725 + 32768) / 65536 = 76.7, green 150.2, blue 29.6,
  // olive (1959500 + 5770500 + 373550 + 32768) / 65536 = 124.1.
  TImageRGB image;
  Fill(image, 3, 2, {kRed, kGreen, kBlue, kOlive, Gray(255), Gray(1)});
  TImageGray gray;
  gray.SetSize(50, 50);
  image.ToGray(gray);
  EXPECT_EQ(gray.GetWidth(), 3);
  EXPECT_EQ(gray.GetStride(), 4);
  EXPECT_EQ(Levels(gray), (std::vector<int>{76, 150, 29, 124, 255, 1}));
  TImageRGB back;
  gray.ToRGB(back);
  EXPECT_EQ(Pixels(back), (TColors{Gray(76), Gray(150), Gray(29), Gray(124), Gray(255), Gray(1)}));
  TImageRGB().ToGray(gray);
  EXPECT_EQ(gray.GetWidth() + gray.GetHeight(), 0);
}

TEST(TImageGray, CopiesOfWrappedMemoryHaveRowsOfTheirOwn) {
  std::vector<unsigned char> bytes = {1, 2, 3, 99, 99, 99, 99, 4, 5, 6, 99, 99, 99, 99};
  const TImageGray wrapped(bytes.data(), 3, 2, 7);
  TImageGray copy;
  copy.CopyFrom(wrapped);
  bytes.assign(bytes.size(), 0);
  EXPECT_EQ(copy.GetStride(), 4);
  EXPECT_EQ(Levels(copy), (std::vector<int>{1, 2, 3, 4, 5, 6}));
  copy.CopyFrom(copy);
  EXPECT_EQ(Levels(copy), (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

TEST(TImageRGB, ScalingFillsTheWholeDestination) {
  TImageRGB even;
  Fill(even, 9, 4, TColors(36, kOlive));
  TImageRGB scaled;
  for (const auto& [width, height] : {std::pair(40, 30), std::pair(3, 2), std::pair(1, 1), std::pair(9, 4)}) {
    even.ScaleTo(scaled, width, height);
    EXPECT_EQ(Pixels(scaled), TColors(static_cast<std::size_t>(width) * height, kOlive));
  }
  TImageRGB().ScaleTo(scaled, 2, 3);
  EXPECT_EQ(Pixels(scaled), TColors(6, TColor{}));
  even.ScaleTo(scaled, 0, 3);
  EXPECT_EQ(scaled.GetWidth(), 0);

  // Left half black, right half white: the order of pixels survives a reduction by two and by more than two.
  TImageGray halves;
  halves.SetSize(16, 2);
  for (int i = 0; i < 32; ++i) {
    halves.SetPixel(i % 16, i / 16, i % 16 < 8 ? 0 : 255);
  }
  TImageGray small;
  halves.ScaleTo(small, 2, 1);
  ASSERT_EQ(Levels(small).size(), 2u);
  EXPECT_LT(Levels(small)[0], 32);
  EXPECT_GT(Levels(small)[1], 223);
}

TEST(CropImage, RectanglesAreClippedToThePicture) {
  constexpr int kMax = 2147483647;
  // The rectangle asked for, as left, top, width and height, and the one cut out.
  constexpr int kCases[][8] = {
      {1, 1, 2, 1, 1, 1, 2, 1},      {0, 0, 5, 4, 0, 0, 5, 4},         {-2, -1, 4, 3, 0, 0, 2, 2},
      {3, 2, 10, 10, 3, 2, 2, 2},    {-9, -9, kMax, kMax, 0, 0, 5, 4}, {kMax, 0, kMax, 4, 0, 0, 0, 0},
      {5, 0, 1, 1, 0, 0, 0, 0},      {0, 4, 1, 1, 0, 0, 0, 0},         {-3, 0, 3, 4, 0, 0, 0, 0},
      {1, 1, 0, 3, 0, 0, 0, 0},      {1, 1, 3, -1, 0, 0, 0, 0},        {-kMax - 1, 1, kMax, 2, 0, 0, 0, 0},
      {4, 3, kMax, kMax, 4, 3, 1, 1}};
  TImageRGB image;
  FillPattern(image, 5, 4);
  TImageGray gray;
  image.ToGray(gray);
  for (const auto& [x, y, width, height, left, top, columns, rows] : kCases) {
    SCOPED_TRACE(testing::Message() << x << "," << y << " " << width << "x" << height);
    TColors pixels;
    for (int i = 0; i < columns * rows; ++i) {
      pixels.push_back(Pattern(left + i % columns, top + i / columns));
    }
    TImageRGB crop;
    CropImage(image, x, y, width, height, crop);
    EXPECT_EQ(std::pair(crop.GetWidth(), crop.GetHeight()), std::pair(columns, rows));
    EXPECT_EQ(Pixels(crop), pixels);
    TImageGray grayCrop;
    CropImage(gray, x, y, width, height, grayCrop);
    TImageGray expected;
    crop.ToGray(expected);
    EXPECT_EQ(std::pair(grayCrop.GetWidth(), grayCrop.GetHeight()), std::pair(columns, rows));
    EXPECT_EQ(Levels(grayCrop), Levels(expected));
  }
  TImageRGB crop;
  CropImage(TImageRGB(), 0, 0, 5, 5, crop);
  EXPECT_EQ(crop.GetWidth() + crop.GetHeight(), 0);
}
