#include "features/feature.h"

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "features/feature-hsv.h"
#include "features/feature-lbp.h"
#include "images/feature-vector.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

class TFeatureWithoutOverrides : public TFeature {};

/// The bins that are not 0, after a test of the vector's form.
std::map<int, double> Bins(const TFeatureVector& vector, const std::string& name) {
  EXPECT_EQ(vector.GetName(), name);
  EXPECT_EQ(vector.GetLength(), 256u);
  std::map<int, double> bins;
  for (std::uint32_t i = 0; i < vector.GetLength(); ++i) {
    if (vector.GetData()[i] != 0.0) {
      bins[static_cast<int>(i)] = vector.GetData()[i];
    }
  }
  return bins;
}

/// "lbp" of a picture whose rows stand in `levels` one behind the other. The bytes between the rows are noise.
std::map<int, double> LbpOf(int width, int height, const std::vector<unsigned char>& levels) {
  const int stride = width + 3;
  std::vector<unsigned char> bytes(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), 255);
  TImageGray image(bytes.data(), width, height, stride);
  for (int i = 0; i < width * height; ++i) {
    image.SetPixel(i % width, i / width, levels[static_cast<std::size_t>(i)]);
  }
  TFeatureVector vector;
  EXPECT_TRUE(TFeatureLbp().ProcessGrayscale(image, vector));
  return Bins(vector, "lbp");
}

using TBins = std::map<int, double>;

}  // namespace

TEST(TFeature, APictureOfTheWrongKindGivesAVectorOfLengthZero) {
  TFeatureVector vector;
  vector.SetLength(5);
  EXPECT_TRUE(TFeatureHsv().ProcessGrayscale(TImageGray(), vector));
  EXPECT_EQ(vector.GetLength(), 0u);
  vector.SetLength(5);
  EXPECT_TRUE(TFeatureLbp().ProcessColor(TImageRGB(), vector));
  EXPECT_EQ(vector.GetLength(), 0u);
  const TFeatureWithoutOverrides feature;
  EXPECT_EQ(feature.GetName(), "");
  EXPECT_FALSE(feature.NeedsColor() || feature.NeedsGrayscale());
}

TEST(TFeatureHsv, EachColorHasItsBin) {
  struct TCase {
    unsigned char red, green, blue;
    int bin;
  };
  const std::vector<TCase> cases = {
      {0, 0, 0, 0},
      {63, 63, 63, 0},
      {64, 64, 64, 1},
      {128, 128, 128, 2},
      {255, 255, 255, 3},
      {255, 0, 0, 15},
      {255, 255, 0, 47},
      {0, 255, 0, 95},
      {0, 255, 255, 127},
      {0, 0, 255, 175},
      {255, 0, 255, 223},
      {200, 100, 50, 11},
      // s = 1 * 255 / 255 = 1, so no gray: hue 0, saturation step 0, value step 3.
      {255, 254, 254, 3},
      // v = 1, s = 255, hue 0: 0 + 3 * 4 + 0.
      {1, 0, 0, 12},
      // (g - b) * 60 / delta = -1 * 60 / 255 = 0 cut towards zero: hue 0, not 359.
      {255, 0, 1, 15},
      // -5 * 60 / 255 = -1, hue 359, h = 359 * 255 / 360 = 254: 240 + 12 + 3.
      {255, 0, 5, 255},
      // Red and blue largest: hue 240 + 60 = 300, h = 212, s = 100 * 255 / 200 = 127: 208 + 1 * 4 + 3.
      {200, 100, 200, 215},
      // s = 255 * 32 / 127 = 64, hue 120, h = 85: 80 + 1 * 4 + 1.
      {95, 127, 95, 85},
  };
  for (const TCase& each : cases) {
    TImageRGB image;
    image.SetSize(5, 2, true);
    for (int i = 0; i < 10; ++i) {
      image.SetPixel(i % 5, i / 5, each.red, each.green, each.blue);
    }
    TFeatureVector vector;
    EXPECT_TRUE(TFeatureHsv().ProcessColor(image, vector));
    EXPECT_EQ(Bins(vector, "hsv"), (TBins{{each.bin, 1.0}}))
        << int{each.red} << ", " << int{each.green} << ", " << int{each.blue};
  }
}

TEST(TFeatureHsv, BinsAreFractionsOfAllPixelsWhateverTheVectorHeld) {
  // Rows of 9 bytes of which 6 are pixels: the rest must not count.
  std::vector<unsigned char> bytes = {255, 0, 0, 0, 0, 0, 9, 9, 9, 255, 0, 0, 0, 255, 0, 9, 9, 9};
  const TImageRGB image(bytes.data(), 2, 2, 9);
  TFeatureVector vector;
  vector.SetName("other");
  vector.SetLength(256);
  std::fill_n(vector.GetData(), 256, 7.0);
  EXPECT_TRUE(TFeatureHsv().ProcessColor(image, vector));
  EXPECT_EQ(Bins(vector, "hsv"), (TBins{{0, 0.25}, {15, 0.5}, {95, 0.25}}));
}

TEST(TFeatureLbp, EachBrighterNeighborSetsItsBitInReadingOrder) {
  // The neighbors of the center in reading order have the weights 1, 2, 4, 8, 16, 32, 64, 128.
  const int positions[] = {0, 1, 2, 3, 5, 6, 7, 8};
  for (int bit = 0; bit < 8; ++bit) {
    std::vector<unsigned char> levels(9, 5);
    levels[static_cast<std::size_t>(positions[bit])] = 6;
    EXPECT_EQ(LbpOf(3, 3, levels), (TBins{{1 << bit, 1.0}}));
  }
}

TEST(TFeatureLbp, OnlyStrictlyBrighterNeighborsCount) {
  EXPECT_EQ(LbpOf(3, 3, {9, 9, 9, 9, 5, 9, 9, 9, 9}), (TBins{{255, 1.0}}));
  EXPECT_EQ(LbpOf(3, 3, {5, 5, 5, 5, 5, 5, 5, 5, 5}), (TBins{{0, 1.0}}));
  EXPECT_EQ(LbpOf(3, 3, {5, 5, 5, 5, 9, 5, 5, 5, 5}), (TBins{{0, 1.0}}));
  // 128 is brighter than 127 and 0 is not: the bytes have no sign.
  EXPECT_EQ(LbpOf(3, 3, {128, 0, 255, 127, 127, 126, 128, 1, 200}), (TBins{{1 + 4 + 32 + 128, 1.0}}));
}

TEST(TFeatureLbp, BinsAreFractionsOfTheInnerPixels) {
  // Six inner pixels. A brighter pixel at (2, 1) sets the bit of each inner neighbor that points to it, and is pattern
  // 0 itself: (1, 1) sees it at the right (16), (3, 1) at the left (8), (1, 2) above right (4), (2, 2) above (2),
  // (3, 2) above left (1).
  std::vector<unsigned char> levels(20, 100);
  levels[5 + 2] = 101;
  const double sixth = 1.0 / 6.0;
  EXPECT_EQ(LbpOf(5, 4, levels), (TBins{{0, sixth}, {16, sixth}, {8, sixth}, {4, sixth}, {2, sixth}, {1, sixth}}));
}

TEST(TFeatures, PicturesWithoutPixelsToCountGiveZerosOrNoNumbers) {
  struct TCase {
    int width, height;
    bool hsvIsNumber, lbpIsNumber;
  };
  // 0 / 0 is no number: "hsv" divides by the pixels, "lbp" by (width - 2) (height - 2).
  const std::vector<TCase> cases = {{0, 0, false, true}, {0, 2, false, false}, {5, 0, false, true}, {1, 1, true, true},
                                    {2, 1, true, false}, {2, 7, true, false},  {7, 2, true, false}, {1, 9, true, true}};
  for (const TCase& each : cases) {
    TImageRGB color;
    color.SetSize(each.width, each.height, true);
    TImageGray gray;
    gray.SetSize(each.width, each.height);
    TFeatureVector hsv;
    TFeatureVector lbp;
    EXPECT_TRUE(TFeatureHsv().ProcessColor(color, hsv));
    EXPECT_TRUE(TFeatureLbp().ProcessGrayscale(gray, lbp));
    ASSERT_EQ(hsv.GetLength(), 256u);
    ASSERT_EQ(lbp.GetLength(), 256u);
    for (int bin = 0; bin < 256; ++bin) {
      if (each.hsvIsNumber) {
        EXPECT_EQ(hsv.GetData()[bin], bin == 0 ? 1.0 : 0.0) << each.width << " x " << each.height;
      } else {
        EXPECT_TRUE(std::isnan(hsv.GetData()[bin])) << each.width << " x " << each.height;
      }
      if (each.lbpIsNumber) {
        EXPECT_EQ(lbp.GetData()[bin], 0.0) << each.width << " x " << each.height;
      } else {
        EXPECT_TRUE(std::isnan(lbp.GetData()[bin])) << each.width << " x " << each.height;
      }
    }
  }
}
