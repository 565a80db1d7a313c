#include "plugins/embedding/embedding-settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <set>
#include <sstream>
#include <string_view>
#include <vector>

namespace {

// Far beyond any network; a slip in the file must not ask for gigabytes.
constexpr int kLargestSide = 4096;

/// One line, cut into words.
struct TLine {
  int number;
  std::vector<std::string> words;

  [[noreturn]] void Refuse(const std::string& reason) const {
    throw TUnusable("embedding.txt, line " + std::to_string(number) + ": " + reason);
  }

  void Expect(std::size_t count) const {
    if (words.size() - 1 != count) {
      Refuse("'" + words[0] + "' takes " + std::to_string(count) + (count == 1 ? " value" : " values"));
    }
  }

  /// Numbers are read in the "C" locale, whatever the user's is.
  template <typename TNumber>
  TNumber Number(std::size_t index) const {
    const std::string& word = words[index];
    TNumber value = {};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    // std::from_chars also reads "inf" and "nan", with which every element would be lost.
    if (error != std::errc() || end != word.data() + word.size() || !std::isfinite(static_cast<double>(value))) {
      Refuse("'" + word + "' is no number");
    }
    return value;
  }

  int Side(std::size_t index) const {
    const int side = Number<int>(index);
    if (side < 1 || side > kLargestSide) {
      Refuse("'" + words[index] + "' is no side from 1 to " + std::to_string(kLargestSide));
    }
    return side;
  }

  double Positive(std::size_t index) const {
    const auto value = Number<double>(index);
    if (value <= 0.0) {
      Refuse("'" + words[index] + "' is not above 0");
    }
    return value;
  }

  /// True for the first of two words, false for the second.
  bool Choose(const char* first, const char* second) const {
    Expect(1);
    if (words[1] != first && words[1] != second) {
      Refuse("'" + words[1] + "' is neither " + first + " nor " + second);
    }
    return words[1] == first;
  }
};

void Apply(const TLine& line, TEmbeddingSettings& settings) {
  const std::string& key = line.words[0];
  if (key == "size") {
    line.Expect(2);
    settings.width = line.Side(1);
    settings.height = line.Side(2);
  } else if (key == "fit") {
    settings.fit = line.Choose("crop", "resize") ? TEmbeddingSettings::TFit::kCrop : TEmbeddingSettings::TFit::kStretch;
  } else if (key == "shorter") {
    line.Expect(1);
    settings.shorterSide = line.Side(1);
  } else if (key == "scale") {
    line.Expect(1);
    settings.scale = line.Positive(1);
  } else if (key == "mean" || key == "deviation") {
    line.Expect(3);
    for (std::size_t i = 0; i < 3; ++i) {
      if (key == "mean") {
        settings.mean[i] = line.Number<double>(i + 1);
      } else {
        settings.deviation[i] = line.Positive(i + 1);
      }
    }
  } else if (key == "channels") {
    settings.isBgr = !line.Choose("rgb", "bgr");
  } else if (key == "output") {
    line.Expect(1);
    settings.output = line.words[1];
  } else {
    line.Refuse("'" + key + "' is not known");
  }
}

}  // namespace

TEmbeddingSettings ParseEmbeddingSettings(const std::string& text) {
  TEmbeddingSettings settings;
  std::set<std::string> keys;
  std::istringstream lines(text);
  std::string bytes;
  for (int number = 1; std::getline(lines, bytes); ++number) {
    // A comment goes up to the end of its line.
    bytes.erase(std::find(bytes.begin(), bytes.end(), '#'), bytes.end());
    // A carriage return is white space too, so that both kinds of line ends will do.
    std::istringstream stream(bytes);
    TLine line = {number, {}};
    for (std::string word; stream >> word;) {
      line.words.push_back(word);
    }
    if (line.words.empty()) {
      continue;
    }
    if (!keys.insert(line.words[0]).second) {
      line.Refuse("'" + line.words[0] + "' stands there twice");
    }
    Apply(line, settings);
  }
  // Of the input, so that the cut fits into the resized picture whichever of its sides is the shorter one.
  const int longerInput = std::max(settings.width, settings.height);
  if (settings.shorterSide == 0) {
    // 256 for an input of 224, the usual proportion of networks trained on ImageNet; 112 rounds.
    settings.shorterSide = (longerInput * 256 + 112) / 224;
  }
  // The cut would reach beyond the resized picture, where there are no pixels to weigh.
  if (settings.fit == TEmbeddingSettings::TFit::kCrop && settings.shorterSide < longerInput) {
    throw TUnusable("embedding.txt: 'shorter " + std::to_string(settings.shorterSide) + "' is less than the input's " +
                    std::to_string(longerInput));
  }
  return settings;
}
