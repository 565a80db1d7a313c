// "cedd": 144 numbers with a sum of 1: color and edge directivity. A picture is cut into 1600 blocks; each enters the
// areas of its texture (0 no edge, 1 non-directional, 2 horizontal, 3 vertical, 4 45 degrees, 5 135 degrees) with the
// 24 shades of its mean color (0 white, 1 gray, 2 black, then a light, a pure and a dark one of red, orange, yellow,
// green, cyan, blue and magenta): element 24 x area + shade. The shares are rounded to the paper's 3 bits and scaled,
// so that an L1 distance makes sense; the authors compare by Tanimoto's coefficient.
//
// S. A. Chatzichristofis, Y. S. Boutalis, "CEDD: Color and Edge Directivity Descriptor", ICVS 2008, LNCS 5008, and the
// authors' program of 2013 for what the paper leaves open (offsets of the hue, thresholds, fewer blocks in pictures
// below 80 pixels). Pictures of one row or column have no block, and zeros throughout.

#include <cmath>

#include "plugins/descriptor.h"
#include "plugins/directional-edges.h"

const TDescriptor kDescriptor = {"cedd", "Color and edge directivity of 1600 blocks", 144, true};

namespace {

constexpr std::size_t kAreas = 6;
constexpr std::size_t kShades = 24;
constexpr std::size_t kHues = 8;

/// A fuzzy set: 0 outside a..d, rising from a to b, 1 from b to c, falling from c to d.
struct TTrapezoid {
  double a;
  double b;
  double c;
  double d;

  double Membership(double value) const {
    if (value < a || value > d) {
      return 0.0;
    }
    if (value < b) {
      return (value - a) / (b - a);
    }
    return value <= c ? 1.0 : (d - value) / (d - c);
  }
};

/// Degrees 0 to 360: red, orange, yellow, green, cyan, blue, magenta, red again.
constexpr std::array<TTrapezoid, kHues> kHueSets = {{{0, 0, 5, 10},
                                                     {5, 10, 35, 50},
                                                     {35, 50, 70, 85},
                                                     {70, 85, 150, 165},
                                                     {150, 165, 195, 205},
                                                     {195, 205, 265, 280},
                                                     {265, 280, 315, 330},
                                                     {315, 330, 360, 360}}};
constexpr std::array<TTrapezoid, 2> kSaturationSets = {{{0, 0, 10, 75}, {10, 75, 255, 255}}};
// Black, gray and white, by the value from 0 to 255.
constexpr std::array<TTrapezoid, 3> kValueSets = {{{0, 0, 10, 75}, {10, 75, 180, 220}, {180, 220, 255, 255}}};
/// Of saturation and of value, for the shades of a hue.
constexpr std::array<TTrapezoid, 2> kShadeSets = {{{0, 0, 68, 188}, {68, 188, 255, 255}}};

/// In millionths, by area.
constexpr double kQuantiser[kAreas][8] = {
    {180.19686541079636, 23730.024499150866, 61457.152912541605, 113918.55437576842, 179122.46400035513,
     260980.3325940354, 341795.93301552488, 554729.98648386425},
    {209.25176965926232, 22490.5872862417345, 60250.8935141849988, 120705.788057580583, 181128.08709063051,
     234132.081356900555, 325660.617733105708, 520702.175858657472},
    {405.4642173212585, 4877.9763319071481, 10882.170090625908, 18167.239081219657, 27043.385568785292,
     38129.413201299016, 52675.221316293857, 79555.402607004813},
    {405.4642173212585, 4877.9763319071481, 10882.170090625908, 18167.239081219657, 27043.385568785292,
     38129.413201299016, 52675.221316293857, 79555.402607004813},
    {968.88475977695578, 10725.159033657819, 24161.205360376698, 41555.917344385321, 62895.628446402261,
     93066.271379694881, 136976.13317822068, 262897.86056221306},
    {968.88475977695578, 10725.159033657819, 24161.205360376698, 41555.917344385321, 62895.628446402261,
     93066.271379694881, 136976.13317822068, 262897.86056221306}};

using TColor = std::array<std::int64_t, 3>;

struct THsv {
  int hue;
  int saturation;
  int value;
};

/// In whole numbers, cut towards 0, with the offsets of the authors' program: 0..359, 0..255, 0..255.
THsv ToHsv(const TColor& color) {
  const auto [red, green, blue] = color;
  const std::int64_t most = std::max({red, green, blue});
  const std::int64_t range = most - std::min({red, green, blue});
  const auto sector = [range](std::int64_t offset, std::int64_t difference) {
    // One division of whole numbers cuts once; offset + 60 * difference / range would cut a negative quotient toward
    // the other side.
    return static_cast<int>((offset * range + 60 * difference) / range);
  };
  int hue = 0;
  if (range == 0) {
    hue = 0;
  } else if (most == red) {
    hue = sector(green >= blue ? 0 : 359, green - blue);
  } else {
    hue = most == green ? sector(119, blue - red) : sector(239, red - green);
  }
  return {hue, most == 0 ? 0 : static_cast<int>(255 * range / most), static_cast<int>(most)};
}

/// White, gray, black and seven hues by the fuzzy rules; the hues then share themselves out to three shades each.
std::array<double, kShades> FuzzyShades(const THsv& hsv) {
  const auto saturation = [&](std::size_t set) { return kSaturationSets[set].Membership(hsv.saturation); };
  const auto value = [&](std::size_t set) { return kValueSets[set].Membership(hsv.value); };
  std::array<double, kShades> shades = {};
  std::array<double, kHues - 1> hues = {};
  for (std::size_t set = 0; set < kHues; ++set) {
    const double hue = kHueSets[set].Membership(hsv.hue);
    if (hue == 0.0) {
      continue;
    }
    const auto rule = [&](double s, double v) { return std::min({hue, s, v}); };
    // Rules of the fuzzy system: a dark value is black whatever its hue, a pale one is gray or white by its value, and
    // the rest belongs to its hue.
    shades[2] += rule(saturation(0), value(0)) + rule(saturation(1), value(0));
    shades[1] += rule(saturation(0), value(1));
    shades[0] += rule(saturation(0), value(2));
    // Both ends of the circle are red.
    hues[set % (kHues - 1)] += rule(saturation(1), value(1)) + rule(saturation(1), value(2));
  }
  const auto paleness = [&](std::size_t set) { return kShadeSets[set].Membership(hsv.saturation); };
  const auto brightness = [&](std::size_t set) { return kShadeSets[set].Membership(hsv.value); };
  // The second system: pale and bright is a light shade, strong and bright a pure one, and all that is dark a dark one.
  const double light = std::min(paleness(0), brightness(1));
  const double pure = std::min(paleness(1), brightness(1));
  const double dark = std::min(paleness(0), brightness(0)) + std::min(paleness(1), brightness(0));
  for (std::size_t i = 0; i < hues.size(); ++i) {
    shades[3 * i + 3] = hues[i] * light;
    shades[3 * i + 4] = hues[i] * pure;
    shades[3 * i + 5] = hues[i] * dark;
  }
  return shades;
}

/// The areas that a block enters by the means of its quarters' gray levels.
std::array<bool, kAreas> Areas(const TQuarters& means) {
  const auto strengths = SquaredStrengths(means);
  const std::int64_t most = *std::max_element(strengths.begin(), strengths.end());
  constexpr std::int64_t kLeast = 14;
  // The strengths are squares, and so is the threshold.
  if (most < kLeast * kLeast) {
    return {true};
  }
  // 0.68 and 0.98 of the greatest strength, squared.
  const auto exceeds = [&](TEdgeKind kind, std::int64_t tenThousandths) {
    return 10000 * strengths[kind] > tenThousandths * most;
  };
  return {false,
          exceeds(kNonDirectional, 4624),
          exceeds(kHorizontal, 9604),
          exceeds(kVertical, 9604),
          exceeds(k45Degrees, 9604),
          exceeds(k135Degrees, 9604)};
}

/// The sums of each channel in the quarters of one block.
using TBlock = std::array<TColor, 4>;

TBlock SumBlock(const TPicture& picture, int left, int top, int width, int height) {
  TBlock block = {};
  for (int y = 0; y < height; ++y) {
    const unsigned char* pixel = picture.Row(top + y) + static_cast<std::ptrdiff_t>(left) * 3;
    for (std::size_t side = 0; side < 2; ++side) {
      int red = 0;
      int green = 0;
      int blue = 0;
      for (int x = 0; x < width / 2; ++x, pixel += 3) {
        red += pixel[0];
        green += pixel[1];
        blue += pixel[2];
      }
      TColor& quarter = block[(y < height / 2 ? 0 : 2) + side];
      quarter = {quarter[0] + red, quarter[1] + green, quarter[2] + blue};
    }
  }
  return block;
}

void AddBlock(const TBlock& block, std::int64_t pixelsOfQuarter, std::span<double> result) {
  TQuarters means;
  TColor color = {};
  for (std::size_t i = 0; i < block.size(); ++i) {
    // The luma of ITU-R BT.601 in thousandths, which whole numbers hold exactly.
    means[i] = (299 * block[i][0] + 587 * block[i][1] + 114 * block[i][2]) / (1000 * pixelsOfQuarter);
    for (std::size_t channel = 0; channel < color.size(); ++channel) {
      color[channel] += block[i][channel];
    }
  }
  for (std::int64_t& channel : color) {
    channel /= 4 * pixelsOfQuarter;
  }
  const auto shades = FuzzyShades(ToHsv(color));
  const auto areas = Areas(means);
  for (std::size_t area = 0; area < kAreas; ++area) {
    for (std::size_t shade = 0; shade < kShades && areas[area]; ++shade) {
      result[kShades * area + shade] += shades[shade];
    }
  }
}

/// The sides of a block, even, from the number of blocks in a row and in a column.
int BlockSide(int size, int blocks) {
  // Even, since a block has four quarters. What is left over at the right and the lower edge of the picture belongs to
  // no block.
  return std::max(2, size / blocks / 2 * 2);
}

int Nearest(double millionths, const double (&table)[8]) {
  int best = 0;
  for (int i = 1; i < 8; ++i) {
    // On a tie the lower level, as the comparison is strict.
    if (std::fabs(millionths - table[i]) < std::fabs(millionths - table[best])) {
      best = i;
    }
  }
  return best;
}

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  const int shorter = std::min(picture.width, picture.height);
  int columns = picture.width / 2;
  int rows = picture.height / 2;
  // The authors' program cuts small pictures into 20 x 20 blocks, and the smallest into blocks of 2 x 2 pixels.
  if (shorter >= 40) {
    columns = rows = shorter >= 80 ? 40 : 20;
  }
  if (columns == 0 || rows == 0) {
    return;
  }
  const int width = BlockSide(picture.width, columns);
  const int height = BlockSide(picture.height, rows);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      AddBlock(SumBlock(picture, column * width, row * height, width, height), std::int64_t{width / 2} * (height / 2),
               result);
    }
  }
  ScaleToUnitSum(result);
  for (std::size_t i = 0; i < result.size(); ++i) {
    // The tables are in millionths of the sum.
    result[i] = Nearest(result[i] * 1e6, kQuantiser[i / kShades]);
  }
  ScaleToUnitSum(result);
}
