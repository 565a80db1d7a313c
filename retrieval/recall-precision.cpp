#include "retrieval/recall-precision.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

__extension__ using TUint128 = unsigned __int128;

constexpr std::uint64_t kScale = 100000000;

/// number * 10^8, rounded to the nearest integer and a half to the even one, for a number from 0 to 1. Exact, as printf
/// is.
std::uint64_t ScaleExactly(double number) {
  const auto bits = std::bit_cast<std::uint64_t>(number);
  const int exponent = static_cast<int>(bits >> 52);
  // The number is mantissa * 2^-shift; a number too small for the format's full precision rounds to 0 anyway.
  const int shift = 1075 - exponent;
  if (shift > 100) {
    return 0;
  }
  const TUint128 product =
      static_cast<TUint128>((bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52)) * kScale;
  const TUint128 half = static_cast<TUint128>(1) << (shift - 1);
  const auto floor = static_cast<std::uint64_t>(product >> shift);
  const TUint128 rest = product - (static_cast<TUint128>(floor) << shift);
  const bool roundsUp = rest > half || (rest == half && floor % 2 == 1);
  return floor + (roundsUp ? 1 : 0);
}

/// The same. The product of doubles is off by less than 10^-7, which matters only close to a half.
std::uint64_t Scale(double number) {
  const double product = number * static_cast<double>(kScale);
  const auto floor = static_cast<std::uint64_t>(product);
  const double rest = product - static_cast<double>(floor);
  if (std::abs(rest - 0.5) < 1e-6) {
    return ScaleExactly(number);
  }
  return floor + (rest > 0.5 ? 1 : 0);
}

/// Two digits for each number below 100.
constexpr std::array<char, 200> kDigitPairs = [] {
  std::array<char, 200> pairs = {};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    pairs[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
  }
  return pairs;
}();

void WriteFourDigits(std::uint32_t number, char* text) {
  std::copy_n(&kDigitPairs[number / 100 * 2], 2, text);
  std::copy_n(&kDigitPairs[number % 100 * 2], 2, text + 2);
}

}  // namespace

char* WriteEightDecimals(double number, char* text) {
  if (std::isnan(number)) {
    return std::copy_n("nan", 3, text);
  }
  const std::uint64_t scaled = Scale(number);
  text[0] = static_cast<char>('0' + scaled / kScale);
  text[1] = '.';
  WriteFourDigits(static_cast<std::uint32_t>(scaled % kScale / 10000), text + 2);
  WriteFourDigits(static_cast<std::uint32_t>(scaled % 10000), text + 6);
  return text + 10;
}

TRecallPrecision MeasureRanking(const std::vector<bool>& relevance, int relevantTotal) {
  constexpr std::size_t kLongestLine = 23;
  TRecallPrecision result = {};
  result.curve.resize(relevance.size() * kLongestLine);
  char* end = result.curve.data();
  int hits = 0;
  int ranks = 0;
  double precisionSum = 0.0;
  // Recall changes at a hit only, and most ranks are none.
  std::array<char, 10> recall;
  std::ptrdiff_t recallLength = 0;
  for (const bool isRelevant : relevance) {
    ++ranks;
    hits += isRelevant ? 1 : 0;
    const double precision = static_cast<double>(hits) / ranks;
    if (isRelevant) {
      precisionSum += precision;
    }
    if (isRelevant || recallLength == 0) {
      recallLength = WriteEightDecimals(static_cast<double>(hits) / relevantTotal, recall.data()) - recall.data();
    }
    // A copy of fixed length is quicker, and the line has room for it.
    std::copy(recall.begin(), recall.end(), end);
    end += recallLength;
    *end++ = ' ';
    end = WriteEightDecimals(precision, end);
    end = std::copy_n("\r\n", 2, end);
  }
  result.curve.resize(static_cast<std::size_t>(end - result.curve.data()));
  result.map = precisionSum / ranks;
  return result;
}

std::string FormatPlotScript(const std::string& tag) {
  return "set title \"Recall/precision\"\r\n"
         "set xlabel \"Recall\"\r\n"
         "set ylabel \"Precision\"\r\n"
         "file = \"recallprecision.txt\"\r\n"
         "set terminal png size 1024,768\r\n"
         "set output \"recallprecision.png\"\r\n"
         "plot file using 1:2 title \"" +
         tag + "\" with lines\r\n";
}

bool IsSafePlotTitle(const std::string& tag) {
  // A backslash at the end would hide the quote that closes the title.
  return !tag.ends_with('\\') && std::none_of(tag.begin(), tag.end(), [](char character) {
    return character == '"' || character == '`' || static_cast<unsigned char>(character) < ' ' || character == '\x7f';
  });
}
