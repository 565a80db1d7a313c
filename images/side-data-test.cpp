#include "images/side-data.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <FreeImage.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "images/image-rgb.h"
#include "tests/support/scratch-directory.h"
#include "tests/support/test-pictures.h"

namespace {

std::string BigEndian(std::size_t number, int size) {
  std::string bytes;
  for (int i = size - 1; i >= 0; --i) {
    bytes += static_cast<char>(number >> (8 * i));
  }
  return bytes;
}

std::string LittleEndian(std::size_t number) {
  const std::string bytes = BigEndian(number, 4);
  return {bytes.rbegin(), bytes.rend()};
}

std::string Segment(int marker, const std::string& data) {
  return '\xff' + std::string(1, static_cast<char>(marker)) + BigEndian(data.size() + 2, 2) + data;
}

/// A gray JPEG with codes of one bit each and no coded pixels: a scan of the means and `more` others.
std::string GrayJpeg(bool isProgressive, std::size_t width, std::size_t height, int more,
                     const std::string& betweenScans = {}) {
  const std::string oneCode = '\1' + std::string(15, '\0');
  std::string jpeg = "\xff\xd8" + Segment(0xdb, '\0' + std::string(64, '\1')) +
                     Segment(isProgressive ? 0xc2 : 0xc0,
                             '\x8' + BigEndian(height, 2) + BigEndian(width, 2) + std::string("\1\1\x11\0", 4)) +
                     Segment(0xc4, '\0' + oneCode + '\0') +
                     Segment(0xc4, '\x10' + oneCode + (isProgressive ? '\xe0' : '\0')) +
                     Segment(0xda, std::string("\1\1\0\0", 4) + (isProgressive ? '\0' : '\x3f') + '\0');
  for (int i = 0; i < more; ++i) {
    jpeg += betweenScans + Segment(0xda, std::string("\1\1\0\1\x3f\0", 6));
  }
  return jpeg + "\xff\xd9";
}

/// The data of an EXIF part whose smaller version of the picture is `small`.
std::string Exif(const std::string& small) {
  // One entry about the picture itself, the second directory, and where its JPEG begins and how long it is.
  const std::string first = std::string("\1\0\x12\1\3\0\1\0\0\0\1\0\0\0", 14) + LittleEndian(26);
  const std::string second = std::string("\2\0\1\2\4\0\1\0\0\0", 10) + LittleEndian(56) +
                             std::string("\2\2\4\0\1\0\0\0", 8) + LittleEndian(small.size()) + LittleEndian(0);
  return std::string("Exif\0\0II*\0\x8\0\0\0", 14) + first + second + small;
}

std::string JpegWith(const std::string& jpeg, const std::string& part) {
  return jpeg.substr(0, 2) + part + jpeg.substr(2);
}

/// A part of a PNG file.
std::string Chunk(const std::string& name, const std::string& data) {
  std::string content = name + data;
  const DWORD sum = FreeImage_ZLibCRC32(0, reinterpret_cast<BYTE*>(content.data()), static_cast<DWORD>(content.size()));
  return BigEndian(data.size(), 4) + content + BigEndian(sum, 4);
}

/// Texts of PNG, 7.9 MB each and some KB as long as they are packed. `head` stands between a text's key and the text.
std::string PackedTexts(const std::string& name, const std::string& head, int count) {
  std::string text(7900000, 'a');
  std::string packed(100000, '\0');
  packed.resize(FreeImage_ZLibCompress(reinterpret_cast<BYTE*>(packed.data()), static_cast<DWORD>(packed.size()),
                                       reinterpret_cast<BYTE*>(text.data()), static_cast<DWORD>(text.size())));
  std::string chunks;
  for (int i = 0; i < count; ++i) {
    chunks += Chunk(name, "key" + std::to_string(i) + head + packed);
  }
  return chunks;
}

/// A part of a WebP file.
std::string RiffChunk(const std::string& name, const std::string& data) {
  return name + LittleEndian(data.size()) + data + std::string(data.size() % 2, '\0');
}

/// The most memory that this process has had, in megabytes.
long MostMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(SideData, IsLeftOutAndNeitherCostsMemoryNorSpoilsThePicture) {
  const TScratchDirectory directory;
  constexpr int kWidth = 20;
  constexpr int kHeight = 10;
  MakePicture("plain.bmp", kWidth, kHeight, [](int x, int y) -> TColor {
    return {static_cast<unsigned char>(9 * x), static_cast<unsigned char>(9 * y), 70};
  });
  TImageRGB picture;
  ASSERT_TRUE(picture.LoadFromFile("plain.bmp"));
  for (const char* name : {"plain.jpg", "plain.png", "plain.webp"}) {
    picture.SaveToFile(name);
  }
  const std::string jpeg = FileBytes("plain.jpg");
  const std::string png = FileBytes("plain.png");
  const std::string webp = FileBytes("plain.webp");
  const std::string header = png.substr(0, 33);
  // 900 megabytes, if anybody believed it.
  const std::string small = GrayJpeg(false, 30000, 30000, 0);
  const std::string withExif =
      RiffChunk("VP8X", std::string("\x8\0\0\0", 4) + static_cast<char>(kWidth - 1) + std::string(2, '\0') +
                            static_cast<char>(kHeight - 1) + std::string(2, '\0')) +
      webp.substr(12) + RiffChunk("EXIF", Exif(small));
  const std::vector<std::pair<std::string, std::string>> files = {
      {"plain.jpg", JpegWith(jpeg, Segment(0xe1, Exif(small)))},
      {"plain.jpg", JpegWith(jpeg, Segment(0xe0, std::string("JFXX\0\x10", 6) + small))},
      {"plain.png", header + PackedTexts("zTXt", std::string(2, '\0'), 16) + png.substr(header.size())},
      {"plain.png", header + PackedTexts("iTXt", std::string("\0\1\0\0\0", 5), 16) + png.substr(header.size())},
      {"plain.webp", "RIFF" + LittleEndian(withExif.size() + 4) + "WEBP" + withExif}};
  for (const auto& [plain, bytes] : files) {
    MakeFile("picture", bytes);
    TImageRGB expected;
    ASSERT_TRUE(expected.LoadFromFile(plain));
    const long before = MostMemory();
    TImageRGB found;
    EXPECT_TRUE(TImageRGB::IsSafe("picture"));
    ASSERT_TRUE(found.LoadFromFile("picture")) << plain;
    EXPECT_LT(MostMemory() - before, 100) << plain;
    EXPECT_FALSE(found.IsDamaged()) << plain;
    ASSERT_EQ(found.GetWidth(), kWidth);
    ASSERT_EQ(found.GetHeight(), kHeight);
    EXPECT_TRUE(std::equal(found.GetPixels(), found.GetPixels() + std::ptrdiff_t{kHeight} * found.GetStride(),
                           expected.GetPixels()))
        << plain;
  }
}

TEST(SideData, APngOfManyPackedTextsIsDecodedApart) {
  const TScratchDirectory directory;
  TImageRGB picture;
  picture.SetSize(5, 4, true);
  picture.SaveToFile("plain.png");
  const std::string png = FileBytes("plain.png");
  MakeFile("packed.png", png.substr(0, 33) + PackedTexts("zTXt", std::string(2, '\0'), 17) + png.substr(33));
  EXPECT_FALSE(TImageRGB::IsSafe("packed.png"));
  ASSERT_TRUE(picture.LoadFromFile("packed.png"));
  EXPECT_FALSE(picture.IsDamaged());
}

TEST(SideData, APictureOfVeryManyPartsIsDecodedApart) {
  const TScratchDirectory directory;
  TImageRGB picture;
  picture.SetSize(5, 4, true);
  // Behind the first part of each: the head of a PNG, and that of a WebP with its pixels.
  for (const auto& [name, head, part] :
       {std::tuple("many.png", 33, Chunk("teSt", "")), std::tuple("many.webp", 0, RiffChunk("teSt", ""))}) {
    picture.SaveToFile(name);
    const std::string whole = FileBytes(name);
    const std::size_t split = head == 0 ? whole.size() : static_cast<std::size_t>(head);
    std::string parts;
    for (int i = 0; i < 100000; ++i) {
      parts += part;
    }
    EXPECT_TRUE(TImageRGB::IsSafe(name));
    MakeFile(name, whole.substr(0, split) + parts + whole.substr(split));
    EXPECT_FALSE(TImageRGB::IsSafe(name)) << name;
  }
}

TEST(SideData, AJpegOfVeryManyScansIsDecodedApart) {
  const TScratchDirectory directory;
  // What looks like the end of the picture between two scans, and is not.
  const std::string comment = Segment(0xfe, "\xff\xd9");
  for (const std::string& between : {std::string(), comment, std::string("\xff\xff\xd3\xff\0", 5)}) {
    MakeFile("usual", GrayJpeg(true, 16, 16, 99, between));
    MakeFile("endless", GrayJpeg(true, 16, 16, 100, between));
    EXPECT_TRUE(TImageRGB::IsSafe("usual"));
    EXPECT_FALSE(TImageRGB::IsSafe("endless"));
    for (const char* name : {"usual", "endless"}) {
      TImageRGB picture;
      ASSERT_TRUE(picture.LoadFromFile(name)) << name;
      EXPECT_EQ(picture.GetWidth(), 16);
    }
  }
  // All that stands behind a scan of all components is none of the picture.
  MakeFile("baseline", GrayJpeg(false, 16, 16, 500));
  EXPECT_TRUE(TImageRGB::IsSafe("baseline"));
}

}  // namespace
