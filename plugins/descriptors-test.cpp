// The descriptors as libraries: what they say of themselves, the worked examples, the numbers that expected/compute.py
// finds by the formulas, and what each promises of pictures that are turned, mirrored, scaled, tiny or large.

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include <QLibrary>
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

using TNumbers = std::vector<double>;

struct TKind {
  const char* className;
  std::size_t length;
  bool isColor;
  bool hasUnitSum;
  /// The largest difference from the formulas: single precision where it is not 1e-8.
  double tolerance;
};

const std::map<std::string, TKind> kKinds = {{"edgehistogram", {"EdgeHistogram", 150, false, false, 1e-8}},
                                             {"colorlayout", {"ColorLayout", 12, true, false, 1e-8}},
                                             {"correlogram", {"Correlogram", 256, true, false, 1e-8}},
                                             {"phog", {"Phog", 420, false, true, 1e-8}},
                                             {"gist", {"Gist", 512, false, true, 1e-7}},
                                             {"tamura", {"Tamura", 512, false, true, 1e-8}},
                                             {"cedd", {"Cedd", 144, true, true, 1e-8}},
                                             {"moments", {"Moments", 81, true, false, 2e-6}}};

/// A picture in rows without a gap, so that a read beyond its end leaves its memory.
class TTestPicture {
 public:
  using TValue = std::function<int(int x, int y, int channel)>;

  TTestPicture(int theWidth, int theHeight, const TValue& value) : width(theWidth), height(theHeight) {
    for (int y = 0; y < theHeight; ++y) {
      for (int x = 0; x < theWidth; ++x) {
        for (int channel = 0; channel < 3; ++channel) {
          colors.push_back(static_cast<unsigned char>(value(x, y, channel)));
        }
        grays.push_back(colors[colors.size() - 3]);
      }
    }
  }

  /// Another picture of the same pixels.
  TTestPicture Map(int newWidth, int newHeight, const std::function<std::pair<int, int>(int x, int y)>& source) const {
    return {newWidth, newHeight, [&](int x, int y, int channel) {
              const auto [fromX, fromY] = source(x, y);
              const int index = 3 * (fromY * width + fromX) + channel;
              return colors[static_cast<std::size_t>(index)];
            }};
  }
  TTestPicture Mirrored() const {
    return Map(width, height, [this](int x, int y) { return std::pair(width - 1 - x, y); });
  }
  TTestPicture Turned() const {
    return Map(height, width, [this](int x, int y) { return std::pair(y, height - 1 - x); });
  }
  TTestPicture Doubled() const {
    return Map(2 * width, 2 * height, [](int x, int y) { return std::pair(x / 2, y / 2); });
  }

  int width;
  int height;
  std::vector<unsigned char> colors;
  /// The first channel.
  std::vector<unsigned char> grays;
};

template <typename TFunctionType>
TFunctionType Resolve(const std::string& name, const char* symbol) {
  const std::string file = DESCRIPTORS_DIRECTORY "/Feature" + std::string(kKinds.at(name).className) + ".so";
  const QFunctionPointer function = QLibrary::resolve(QString::fromStdString(file), symbol);
  EXPECT_NE(function, nullptr) << name << " " << symbol;
  return reinterpret_cast<TFunctionType>(function);
}

TNumbers Call(const std::string& name, const unsigned char* pixels, int width, int height, int stride) {
  using TProcess = std::int32_t (*)(const unsigned char*, std::int32_t, std::int32_t, std::int32_t, double*);
  const TKind& kind = kKinds.at(name);
  TNumbers result(kind.length, std::numeric_limits<double>::quiet_NaN());
  Resolve<TProcess>(name, kind.isColor ? "ProcessColor" : "ProcessGrayscale")(pixels, width, height, stride,
                                                                              result.data());
  return result;
}

TNumbers Describe(const std::string& name, const TTestPicture& picture) {
  return kKinds.at(name).isColor ? Call(name, picture.colors.data(), picture.width, picture.height, 3 * picture.width)
                                 : Call(name, picture.grays.data(), picture.width, picture.height, picture.width);
}

double Sum(const TNumbers& numbers) {
  return std::accumulate(numbers.begin(), numbers.end(), 0.0);
}

double Distance(const TNumbers& left, const TNumbers& right) {
  return std::inner_product(left.begin(), left.end(), right.begin(), 0.0, std::plus<>(),
                            [](double a, double b) { return std::fabs(a - b); });
}

/// Every element that is not named is 0.
void ExpectOnly(const TNumbers& numbers, const std::map<std::size_t, double>& expected, double tolerance = 1e-12) {
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto found = expected.find(i);
    EXPECT_NEAR(numbers[i], found == expected.end() ? 0.0 : found->second, tolerance) << "element " << i;
  }
}

void ExpectSound(const std::string& name, const TNumbers& numbers) {
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    ASSERT_TRUE(numbers[i] >= 0.0 && numbers[i] <= 1.0) << name << " element " << i << ": " << numbers[i];
  }
  const double sum = Sum(numbers);
  if (kKinds.at(name).hasUnitSum && sum != 0.0) {
    ASSERT_NEAR(sum, 1.0, 1e-9) << name;
  }
}

/// The made pictures of compute.py.
int MadeValue(int x, int y, int channel) {
  const auto ux = static_cast<std::uint32_t>(x);
  const auto uy = static_cast<std::uint32_t>(y);
  const auto uc = static_cast<std::uint32_t>(channel);
  std::uint32_t hash = ux * 374761393u + uy * 668265263u + uc * 2246822519u;
  hash = (hash ^ (hash >> 13)) * 1274126177u;
  const std::uint32_t patch = (ux / 11 + uy / 7 * (uc + 2)) % 5;
  return static_cast<int>(std::min(255u, (ux * 2 + uy * (uc + 1)) % 140 + 22 * patch + ((hash >> 16) & 31)));
}

TTestPicture Made(int width, int height) {
  return {width, height, MadeValue};
}

TTestPicture Flat(int width, int height, const std::array<int, 3>& color) {
  return {width, height, [&](int, int, int channel) { return color[static_cast<std::size_t>(channel)]; }};
}

/// `left` in front of column `edge`, `right` from there.
TTestPicture Halves(int width, int height, int edge, int left, int right) {
  return {width, height, [=](int x, int, int) { return x < edge ? left : right; }};
}

}  // namespace

TEST(TDescriptors, SayWhatTheyAre) {
  for (const auto& [name, kind] : kKinds) {
    EXPECT_EQ(Resolve<const char* (*)()>(name, "GetShortDescription")(), name);
    EXPECT_NE(std::string(Resolve<const char* (*)()>(name, "GetDescription")()), "");
    EXPECT_EQ(Resolve<std::int32_t (*)()>(name, "GetFeatureLength")(), kind.length) << name;
    EXPECT_EQ(Resolve<bool (*)()>(name, "NeedsColor")(), kind.isColor) << name;
    EXPECT_EQ(Resolve<bool (*)()>(name, "NeedsGrayscale")(), !kind.isColor) << name;
  }
}

TEST(TDescriptors, GiveTheNumbersOfTheFormulas) {
  const std::map<std::string, TTestPicture> pictures = {{"small", Made(45, 37)}, {"large", Made(200, 150)}};
  for (const auto& [name, kind] : kKinds) {
    for (const auto& [size, picture] : pictures) {
      std::ifstream file(EXPECTED_DIRECTORY "/" + name + "-" + size + ".txt");
      const TNumbers expected{std::istream_iterator<double>(file), {}};
      const TNumbers numbers = Describe(name, picture);
      ASSERT_EQ(expected.size(), numbers.size()) << name;
      for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_NEAR(numbers[i], expected[i], kind.tolerance) << name << " " << size << " element " << i;
      }
    }
  }
}

TEST(TDescriptors, EmptyTinyAndNarrowPicturesHaveNumbersToo) {
  const std::vector<std::pair<int, int>> sizes = {{1, 1},  {1, 500}, {500, 1}, {2, 2},   {3, 3},    {2, 90},  {7, 5},
                                                  {8, 8},  {5, 16},  {39, 40}, {40, 39}, {41, 79},  {80, 80}, {69, 71},
                                                  {33, 2}, {3, 700}, {127, 1}, {15, 17}, {129, 128}};
  for (const auto& [name, kind] : kKinds) {
    EXPECT_EQ(Call(name, nullptr, 0, 0, 0), TNumbers(kind.length, 0.0)) << name;
    for (const auto& [width, height] : sizes) {
      const TNumbers numbers = Describe(name, Made(width, height));
      SCOPED_TRACE(name + " " + std::to_string(width) + " x " + std::to_string(height));
      ExpectSound(name, numbers);
      EXPECT_EQ(Describe(name, Made(width, height)), numbers);
    }
  }
}

TEST(TDescriptors, RowsMayHaveGaps) {
  const TTestPicture picture = Made(45, 37);
  for (const auto& [name, kind] : kKinds) {
    const auto& pixels = kind.isColor ? picture.colors : picture.grays;
    const std::size_t row = pixels.size() / 37;
    std::vector<unsigned char> spread;
    for (std::size_t y = 0; y < 37; ++y) {
      spread.insert(spread.end(), pixels.begin() + static_cast<std::ptrdiff_t>(y * row),
                    pixels.begin() + static_cast<std::ptrdiff_t>((y + 1) * row));
      spread.insert(spread.end(), 3, 211);
    }
    EXPECT_EQ(Call(name, spread.data(), 45, 37, static_cast<int>(row + 3)), Describe(name, picture)) << name;
  }
}

/// Sums over a picture of twelve million pixels leave 32 bits.
TEST(TDescriptors, LargePicturesHaveTheNumbersOfSmallOnes) {
  const TTestPicture white = Flat(4000, 3000, {255, 255, 255});
  const TTestPicture small = Flat(400, 300, {255, 255, 255});
  for (const std::string name : {"edgehistogram", "colorlayout", "phog", "gist", "tamura", "cedd", "moments"}) {
    EXPECT_LT(Distance(Describe(name, white), Describe(name, small)), 1e-9) << name;
  }
  // The ring of radius k in a flat picture, counted as the difference of two squares.
  const auto pairs = [](double k) { return (4000 * (2 * k + 1) - k * (k + 1)) * (3000 * (2 * k + 1) - k * (k + 1)); };
  std::map<std::size_t, double> expected;
  for (const int k : {1, 3, 5, 7}) {
    expected[static_cast<std::size_t>(252 + k / 2)] = (pairs(k) - pairs(k - 1)) / (8.0 * k * 4000 * 3000);
  }
  ExpectOnly(Describe("correlogram", white), expected);
  const TTestPicture made = Made(4000, 3000);
  for (const auto& [name, kind] : kKinds) {
    ExpectSound(name, Describe(name, made));
  }
}

/// The plain code is one of the levels.
TEST(TDescriptors, GiveTheSameBytesAtEverySimdLevel) {
  const std::vector<TTestPicture> pictures = {Made(200, 150), Made(45, 37), Made(17, 3), Made(1, 90)};
  for (const std::string name : {"moments", "phog", "tamura"}) {
    for (const TTestPicture& picture : pictures) {
      const TNumbers best = Describe(name, picture);
      int levels = 0;
      for (std::int64_t rest = hwy::SupportedTargets() & HWY_TARGETS; rest != 0; rest &= rest - 1) {
        hwy::SetSupportedTargetsForTest(rest & -rest);
        EXPECT_EQ(Describe(name, picture), best) << name << " " << hwy::TargetName(rest & -rest);
        hwy::SetSupportedTargetsForTest(0);
        ++levels;
      }
      EXPECT_GE(levels, 1);
    }
  }
}

TEST(TDescriptors, AreTheSameOnEachRunOverTheSampleCollection) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(SAMPLES_DIRECTORY "/photos")) {
    TImageRGB color;
    ASSERT_TRUE(color.LoadFromFile(entry.path()));
    TImageGray gray;
    color.ToGray(gray);
    for (const auto& [name, kind] : kKinds) {
      const auto describe = [&, &feature = name, isColor = kind.isColor] {
        return isColor ? Call(feature, color.GetPixels(), color.GetWidth(), color.GetHeight(), color.GetStride())
                       : Call(feature, gray.GetPixels(), gray.GetWidth(), gray.GetHeight(), gray.GetStride());
      };
      const TNumbers numbers = describe();
      ExpectSound(name, numbers);
      EXPECT_GT(Sum(numbers), 0.0) << name << " " << entry.path();
      EXPECT_EQ(describe(), numbers) << name << " " << entry.path();
    }
    ++count;
  }
  EXPECT_EQ(count, 110u);
}

// By hand: 160 x 160 has blocks of 4 x 4, 100 in each part.
TEST(TEdgeHistogram, CountsTheBlocksOnAnEdge) {
  constexpr double kNone[5] = {0.010867, 0.012266, 0.004193, 0.004174, 0.006778};
  constexpr double kTenth[5] = {0.099526, 0, 0.093286, 0.089655, 0};
  const auto expect = [&](const TTestPicture& picture, std::size_t kind, const std::vector<std::size_t>& parts) {
    const TNumbers numbers = Describe("edgehistogram", picture);
    for (std::size_t i = 0; i < 80; ++i) {
      const bool isHit = i % 5 == kind && std::find(parts.begin(), parts.end(), i / 5) != parts.end();
      EXPECT_NEAR(numbers[5 + i], (isHit ? kTenth[kind] : kNone[i % 5]) / 5.0, 1e-12) << i;
    }
    const auto hits = static_cast<double>(parts.size());
    EXPECT_NEAR(numbers[kind], (hits * kTenth[kind] + (16.0 - hits) * kNone[kind]) / 16.0, 1e-12);
  };
  expect(Halves(160, 160, 42, 0, 200), 0, {1, 5, 9, 13});
  expect({160, 160, [](int x, int y, int) { return x + y < 160 ? 0 : 200; }}, 2, {3, 6, 9, 12});
  expect({160, 160, [](int x, int y, int) { return x >= y ? 0 : 200; }}, 3, {0, 5, 10, 15});
  expect(Flat(160, 160, {128, 128, 128}), 0, {});
  // Semi-global: the second column holds all of it, each row a quarter.
  const TNumbers numbers = Describe("edgehistogram", Halves(160, 160, 42, 0, 200));
  EXPECT_NEAR(numbers[85 + 5], 0.099526 / 5.0, 1e-12);
  EXPECT_NEAR(numbers[85 + 20], (0.099526 + 3 * 0.010867) / 4.0 / 5.0, 1e-12);
}

TEST(TEdgeHistogram, MirroringAndTurningMovePartsAndExchangeKinds) {
  // 192 x 192 has blocks of 4 x 4.
  const TTestPicture picture = Made(192, 192);
  const TNumbers numbers = Describe("edgehistogram", picture);
  // The quantisers of 45 and 135 degrees differ, so their bins cannot be compared.
  const auto mirrored = Describe("edgehistogram", picture.Mirrored());
  for (std::size_t part = 0; part < 16; ++part) {
    const std::size_t other = part / 4 * 4 + 3 - part % 4;
    for (const std::size_t kind : {0, 1, 4}) {
      EXPECT_EQ(mirrored[5 + 5 * other + kind], numbers[5 + 5 * part + kind]) << part << " " << kind;
    }
  }
  const TNumbers turned = Describe("edgehistogram", Halves(160, 160, 42, 0, 200).Turned());
  EXPECT_NEAR(turned[5 + 5 * 4 + 1], 0.125879 / 5.0, 1e-12) << "an upright edge lies in the second row of parts";
}

TEST(TColorLayout, GivesTheStandardsNumbers) {
  const std::array<double, 12> roots = {2, 2, 2, 1, 1, 1, 2, 1, 1, 4, 2, 2};
  const auto expect = [&](const TTestPicture& picture, const std::array<int, 12>& quantised) {
    const TNumbers numbers = Describe("colorlayout", picture);
    for (std::size_t i = 0; i < 12; ++i) {
      EXPECT_NEAR(numbers[i] * 126.0 / std::sqrt(roots[i]), quantised[i], 1e-9) << i;
    }
  };
  const auto both = [](const std::array<int, 3>& first, const std::array<int, 3>& second, bool isSideways) {
    return TTestPicture(32, 32, [&, isSideways](int x, int y, int channel) {
      return ((isSideways ? x : y) < 16 ? first : second)[static_cast<std::size_t>(channel)];
    });
  };
  expect(Flat(32, 32, {128, 128, 128}), {31, 16, 16, 16, 16, 16, 32, 16, 16, 32, 16, 16});
  expect(Flat(9, 70, {0, 0, 0}), {2, 16, 16, 16, 16, 16, 32, 16, 16, 32, 16, 16});
  expect(Flat(3, 3, {255, 255, 255}), {61, 16, 16, 16, 16, 16, 32, 16, 16, 32, 16, 16});
  expect(Flat(32, 32, {255, 0, 0}), {12, 16, 16, 16, 16, 16, 6, 16, 16, 63, 16, 16});
  expect(Flat(32, 32, {0, 255, 0}), {40, 16, 16, 16, 16, 16, 0, 16, 16, 0, 16, 16});
  expect(Flat(32, 32, {0, 0, 255}), {5, 16, 16, 16, 16, 16, 63, 16, 16, 15, 16, 16});
  expect(both({0, 0, 0}, {255, 255, 255}, true), {30, 0, 16, 16, 16, 16, 32, 16, 16, 32, 16, 16});
  expect(both({0, 0, 0}, {255, 255, 255}, false), {30, 16, 0, 16, 16, 16, 32, 16, 16, 32, 16, 16});
  expect(both({255, 0, 0}, {0, 0, 255}, true), {7, 25, 16, 16, 16, 16, 57, 0, 16, 59, 31, 16});
}

TEST(TColorLayout, TheSizeOfAPictureHardlyMatters) {
  const TTestPicture picture = Made(200, 150);
  // One step of the coarsest quantiser, once.
  EXPECT_LT(Distance(Describe("colorlayout", picture), Describe("colorlayout", picture.Doubled())), 2.1 / 126.0);
}

TEST(TCorrelogram, CountsPairsOnTheRings) {
  const auto expect = [](const TTestPicture& picture, std::size_t first, const std::array<double, 4>& pairs, double h) {
    const TNumbers numbers = Describe("correlogram", picture);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_DOUBLE_EQ(numbers[first + i], pairs[i] / (8.0 * static_cast<double>(2 * i + 1) * h)) << i;
    }
  };
  expect(Flat(16, 16, {128, 128, 128}), 168, {1860, 4524, 5940, 6300}, 256);
  for (const std::size_t first : {0, 252}) {
    expect(Halves(16, 16, 8, 0, 255), first, {884, 1884, 2020, 1484}, 128);
    expect({16, 16, [](int x, int y, int) { return (x + y) % 2 * 255; }}, first, {450, 1118, 1474, 1566}, 128);
  }
  EXPECT_EQ(Describe("correlogram", Flat(1, 1, {9, 9, 9})), TNumbers(256, 0.0));
  // Red stands above green, green above blue.
  EXPECT_GT(Describe("correlogram", Flat(16, 16, {255, 70, 130}))[std::size_t{4} * (48 + 4 + 2)], 0.9);
}

TEST(TCorrelogram, IsTheSameForTurnedAndMirroredPictures) {
  const TTestPicture picture = Made(93, 71);
  const TNumbers numbers = Describe("correlogram", picture);
  EXPECT_EQ(Describe("correlogram", picture.Turned()), numbers);
  EXPECT_EQ(Describe("correlogram", picture.Mirrored()), numbers);
}

TEST(TPhog, PutsAnUprightEdgeIntoItsBinOnEachLevel) {
  const TTestPicture step(16, 16, [](int x, int, int) { return x < 8 ? 0 : (x == 8 ? 100 : 200); });
  const std::map<std::size_t, double> expected = {{9, 1 / 3.0},    {69, 1 / 6.0},   {89, 1 / 6.0},  {269, 1 / 12.0},
                                                  {289, 1 / 12.0}, {309, 1 / 12.0}, {329, 1 / 12.0}};
  ExpectOnly(Describe("phog", step), expected);
  // Lying, it is gray level that grows downwards: the last bin, in the lower cells.
  const TNumbers lying = Describe("phog", step.Turned());
  EXPECT_NEAR(lying[19], 1 / 3.0, 1e-12);
  EXPECT_NEAR(lying[20 + 20 + 19], 1 / 6.0, 1e-12);
  EXPECT_NEAR(lying[100 + 2 * 20 + 19], 1 / 12.0, 1e-12);
  EXPECT_EQ(Sum(Describe("phog", Flat(64, 48, {90, 90, 90}))), 0.0);
}

TEST(TPhog, LightAndContrastDoNotMatterAndMirroringReversesCellsAndBins) {
  const auto waves = [](int x, int y) {
    return static_cast<int>(
        std::lround(50 + 20 * std::sin(0.21 * x + 0.083 * y) + 17 * std::cos(0.13 * y - 0.057 * x)));
  };
  const TTestPicture picture(120, 96, [&](int x, int y, int) { return waves(x, y); });
  const TTestPicture bright(120, 96, [&](int x, int y, int) { return 2 * waves(x, y) + 60; });
  EXPECT_LT(Distance(Describe("phog", bright), Describe("phog", picture)), 0.02);
  const TTestPicture made = Made(120, 96);
  const TNumbers numbers = Describe("phog", made);
  const TNumbers mirrored = Describe("phog", made.Mirrored());
  double difference = 0.0;
  std::size_t begin = 0;
  for (const std::size_t cells : {1, 2, 4}) {
    for (std::size_t cell = 0; cell < cells * cells; ++cell) {
      const std::size_t other = (cells - 1 - cell / cells) * cells + cell % cells;
      for (std::size_t bin = 0; bin < 20; ++bin) {
        difference += std::fabs(numbers[begin + 20 * cell + bin] - mirrored[begin + 20 * other + 19 - bin]);
      }
    }
    begin += 20 * cells * cells;
  }
  // Angles on the edge of a bin fall into its neighbor.
  EXPECT_LT(difference, 0.25);
  EXPECT_GT(Distance(numbers, mirrored), 0.5) << "or the test compares nothing";
}

TEST(TGist, AnswersToStripesInTheirDirectionAndScale) {
  const TTestPicture stripes(128, 128, [](int x, int, int) { return x / 4 % 2 == 0 ? 50 : 200; });
  const auto share = [](const TNumbers& numbers, std::size_t scale, std::size_t orientation) {
    const auto begin = numbers.begin() + static_cast<std::ptrdiff_t>(16 * (8 * scale + orientation));
    return std::accumulate(begin, begin + 16, 0.0);
  };
  const TNumbers upright = Describe("gist", stripes);
  const TNumbers lying = Describe("gist", stripes.Turned());
  const std::array<double, 8> fine = {0.2438, 0.0925, 0.0051, 0.0, 0.0, 0.0, 0.0051, 0.0925};
  for (std::size_t j = 0; j < 8; ++j) {
    EXPECT_NEAR(share(upright, 1, j), fine[j], 6e-5) << j;
    EXPECT_NEAR(share(lying, 1, (j + 4) % 8), fine[j], 6e-5) << j;
  }
  EXPECT_NEAR(share(upright, 0, 0), 0.1235, 6e-5);
  EXPECT_NEAR(share(upright, 2, 0), 0.1715, 6e-5);
  EXPECT_NEAR(share(upright, 3, 0), 0.0165, 6e-5);
  const TNumbers halves = Describe("gist", Halves(128, 128, 64, 50, 200));
  const std::array<double, 4> scales = {0.0556, 0.0864, 0.1548, 0.2585};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(share(halves, i, 0), scales[i], 6e-5) << i;
    EXPECT_NEAR(halves[i] * 6.0882, 0.0058, 6e-5) << "a block of the first column";
    EXPECT_NEAR(halves[4 + i] * 6.0882, 0.0366, 6e-5) << "a block of the second column";
  }
  const TNumbers diagonal = Describe("gist", {128, 128, [](int x, int y, int) { return (x + y) / 4 % 2 * 150; }});
  for (std::size_t j = 0; j < 8; ++j) {
    EXPECT_LE(share(diagonal, 1, j), share(diagonal, 1, 6)) << j;
  }
  EXPECT_EQ(Sum(Describe("gist", Flat(200, 150, {77, 77, 77}))), 0.0);
}

TEST(TGist, MirroringReversesColumnsAndOrientations) {
  const TTestPicture picture = Made(128, 128);
  const TNumbers numbers = Describe("gist", picture);
  const TNumbers mirrored = Describe("gist", picture.Mirrored());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::size_t filter = i / 16 / 8 * 8 + (8 - i / 16 % 8) % 8;
    const std::size_t block = 4 * (3 - i % 16 / 4) + i % 4;
    // The highest of an even number of frequencies has no mirror image.
    EXPECT_NEAR(mirrored[16 * filter + block], numbers[i], 2e-5) << i;
  }
}

TEST(TTamura, SeparatesCoarsenessContrastAndDirection) {
  ExpectOnly(Describe("tamura", Flat(64, 48, {90, 90, 90})), {{0, 1.0}});
  // By columns, the same in each row, since what lies above and below is the same. Coarseness 0 for x < 16 and from 48,
  // 5 in 16..31 and 33..47, 1 at 32; contrast below in sixteenths of 16; direction pi / 2 at 31 and 32.
  const TNumbers numbers = Describe("tamura", Halves(64, 64, 32, 0, 200));
  const std::array<int, 10> contrast = {2, 3, 4, 5, 6, 6, 5, 4, 3, 2};
  std::map<std::size_t, double> expected;
  for (int x = 0; x < 64; ++x) {
    const int coarse = x < 16 || x >= 48 ? 0 : (x == 32 ? 1 : 7);
    const int direction = x == 31 || x == 32 ? 4 : 0;
    const int level = x >= 27 && x <= 36 ? contrast[static_cast<std::size_t>(x - 27)] : 0;
    expected[static_cast<std::size_t>(64 * direction + 8 * coarse + level)] += 1.0 / 64.0;
  }
  // Above and below, the windows are cut at the border, and their shares of both halves stay as they were.
  ExpectOnly(numbers, expected);
}

TEST(TTamura, AddedLightChangesNothing) {
  const TTestPicture dark(120, 90, [](int x, int y, int channel) { return MadeValue(x, y, channel) / 2; });
  const TTestPicture bright(120, 90, [](int x, int y, int channel) { return MadeValue(x, y, channel) / 2 + 100; });
  // Of the means over windows that are cut at the border, the last digit may decide.
  EXPECT_LT(Distance(Describe("tamura", dark), Describe("tamura", bright)), 0.002);
}

TEST(TCedd, NamesTheColorsOfFlatPictures) {
  const std::map<std::size_t, std::array<int, 3>> cases = {
      {0, {255, 255, 255}}, {1, {128, 128, 128}}, {2, {0, 0, 0}}, {4, {255, 0, 0}}, {19, {0, 0, 255}}};
  for (const auto& [element, color] : cases) {
    for (const int side : {2, 39, 40, 79, 80, 200}) {
      ExpectOnly(Describe("cedd", Flat(side, side, color)), {{element, 1.0}});
    }
  }
  // (200, 120, 60) is orange, 0.0833 light and 0.9167 pure; levels 2 and 7 of the table are nearest.
  ExpectOnly(Describe("cedd", Flat(80, 80, {200, 120, 60})), {{6, 2 / 9.0}, {7, 7 / 9.0}});
  // (120, 60, 60) is red, 0.4333 light, 0.4333 pure and 1.0 dark: shares of 0.232, 0.232 and 0.536.
  ExpectOnly(Describe("cedd", Flat(80, 80, {120, 60, 60})), {{3, 5 / 17.0}, {4, 5 / 17.0}, {5, 7 / 17.0}});
  EXPECT_EQ(Sum(Describe("cedd", Flat(1, 500, {255, 0, 0}))), 0.0) << "no block fits";
}

TEST(TCedd, FindsAnUprightEdgeAndItsTurnedOne) {
  const TTestPicture picture = Halves(80, 80, 41, 0, 255);
  ExpectOnly(Describe("cedd", picture), {{2, 7 / 18.0}, {0, 7 / 18.0}, {24 * 3 + 1, 4 / 18.0}});
  // Turned, the column of blocks is a row of them.
  const TTestPicture lying(80, 80, [](int, int y, int) { return y < 41 ? 0 : 255; });
  ExpectOnly(Describe("cedd", lying), {{2, 7 / 18.0}, {0, 7 / 18.0}, {24 * 2 + 1, 4 / 18.0}});
}

TEST(TMoments, KnowTheColorsAndTheMoments) {
  const std::map<std::array<int, 3>, std::array<double, 3>> cases = {{{128, 128, 128}, {53.5850, 0, 0}},
                                                                     {{255, 0, 0}, {53.2408, 80.0925, 67.2032}},
                                                                     {{0, 255, 0}, {87.7347, -86.1827, 83.1793}},
                                                                     {{0, 0, 255}, {32.2970, 79.1875, -107.8602}},
                                                                     {{200, 30, 60}, {43.5632, 64.0573, 28.4711}}};
  for (const auto& [color, lab] : cases) {
    const TNumbers numbers = Describe("moments", Flat(30, 30, color));
    for (std::size_t cell = 0; cell < 9; ++cell) {
      EXPECT_NEAR(numbers[9 * cell] * 100, lab[0], 1e-4);
      EXPECT_NEAR(numbers[9 * cell + 3] * 256 - 128, lab[1], 4e-4);
      EXPECT_NEAR(numbers[9 * cell + 6] * 256 - 128, lab[2], 4e-4);
      for (const std::size_t channel : {0, 3, 6}) {
        EXPECT_EQ(numbers[9 * cell + channel + 1], 0.0);
        EXPECT_EQ(numbers[9 * cell + channel + 2], 0.5);
      }
    }
  }
  // A quarter of each cell is white.
  const TNumbers mixed = Describe("moments", {12, 12, [](int x, int y, int) { return x % 2 * (y % 2) * 255; }});
  EXPECT_NEAR(mixed[0], 0.25, 1e-6);
  EXPECT_NEAR(mixed[1], 43.30127 / 50.0, 1e-6);
  EXPECT_NEAR(mixed[2], 0.5 + 45.42801 / 100.0, 1e-6);
  // Without a pixel, a cell counts as black without change.
  const TNumbers narrow = Describe("moments", Flat(1, 3, {255, 255, 255}));
  EXPECT_EQ(TNumbers(narrow.begin(), narrow.begin() + 9), (TNumbers{0, 0, 0.5, 0.5, 0, 0.5, 0.5, 0, 0.5}));
  EXPECT_NEAR(narrow[18], 1.0, 1e-6);
}

TEST(TMoments, CellsMoveWithThePicture) {
  const TTestPicture picture = Made(90, 60);
  const TNumbers numbers = Describe("moments", picture);
  const TNumbers mirrored = Describe("moments", picture.Mirrored());
  const TNumbers turned = Describe("moments", picture.Turned());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::size_t row = i / 27;
    const std::size_t column = i / 9 % 3;
    EXPECT_NEAR(mirrored[9 * (3 * row + 2 - column) + i % 9], numbers[i], 1e-9) << i;
    EXPECT_NEAR(turned[9 * (3 * column + 2 - row) + i % 9], numbers[i], 1e-9) << i;
  }
  EXPECT_LT(Distance(Describe("moments", picture.Doubled()), numbers), 1e-6);
}
