#include "retrieval/recall-precision-text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

// "0.", or "1.", and eight digits; two of them with a blank between and CR LF make the longest line.
constexpr std::ptrdiff_t kNumberLength = 10;
constexpr std::size_t kLongestLine = 23;

/// Two digits for each number below 100.
constexpr std::array<char, 200> kDigitPairs = [] {
  std::array<char, 200> pairs = {};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    pairs[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
  }
  return pairs;
}();

void WriteFourDigits(std::size_t number, char* text) {
  std::copy_n(&kDigitPairs[number / 100 * 2], 2, text);
  std::copy_n(&kDigitPairs[number % 100 * 2], 2, text + 2);
}

}  // namespace

// The curve of a large collection is a million lines. std::to_chars gives the same digits, but takes three times as
// long: then the text would cost four times what writing its file does. So it is left what a product of doubles cannot
// decide.
char* WriteEightDecimals(double number, char* text) {
  constexpr std::uint32_t kScale = 100000000;
  if (std::isnan(number)) {
    return std::copy_n("nan", 3, text);
  }
  const double product = number * kScale;
  auto scaled = static_cast<std::uint32_t>(product);
  // The product is off by less than 10^-7, which matters only close to a half.
  const double rest = product - scaled;
  if (std::abs(rest - 0.5) < 1e-6) {
    return std::to_chars(text, text + kNumberLength, number, std::chars_format::fixed, 8).ptr;
  }
  // Exact halves, where printf rounds to even, are among those that to_chars has taken above.
  scaled += rest > 0.5 ? 1 : 0;
  text[0] = static_cast<char>('0' + scaled / kScale);
  text[1] = '.';
  WriteFourDigits(scaled % kScale / 10000, text + 2);
  WriteFourDigits(scaled % 10000, text + 6);
  return text + kNumberLength;
}

std::string FormatCurve(const std::vector<TRecallPrecisionPoint>& curve) {
  std::string lines(curve.size() * kLongestLine, '\0');
  char* end = lines.data();
  // Recall changes at a hit only, and most ranks are none.
  std::array<char, kNumberLength> recall = {};
  std::ptrdiff_t recallLength = 0;
  double written = 0.0;
  for (const TRecallPrecisionPoint& point : curve) {
    if (recallLength == 0 || point.recall != written) {
      recallLength = WriteEightDecimals(point.recall, recall.data()) - recall.data();
      written = point.recall;
    }
    // A copy of fixed length is quicker, and the line has room for it.
    std::copy(recall.begin(), recall.end(), end);
    end += recallLength;
    *end++ = ' ';
    end = WriteEightDecimals(point.precision, end);
    end = std::copy_n("\r\n", 2, end);
  }
  lines.resize(static_cast<std::size_t>(end - lines.data()));
  return lines;
}
