#include "experiments/expectation.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "base/format-string.h"
#include "base/text.h"

namespace {

std::size_t Decimals(const std::string& number) {
  const std::size_t point = number.find('.');
  return point == std::string::npos ? 0 : number.size() - point - 1;
}

std::string Rounded(double number, std::size_t decimals) {
  return FormatString("%.*f", static_cast<int>(decimals), number);
}

/// True for digits, and as many as fifteen more behind a point.
bool IsNumber(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view decimals = text.substr(std::min(point + 1, text.size()));
  const auto areDigits = [](std::string_view digits) {
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
  };
  // A double keeps fifteen decimal digits (DBL_DIG), and no measure is above 1.
  return areDigits(text.substr(0, point)) && (point == text.size() || (areDigits(decimals) && decimals.size() <= 15));
}

}  // namespace

std::optional<TExpectation> ParseExpectation(const std::string& text) {
  // From the end: the name of a set may hold any of these characters, a number does not.
  const std::size_t sign = text.find_last_of("<>=");
  if (sign == std::string::npos || sign == 0 || text[sign] != '=') {
    return std::nullopt;
  }
  const std::string_view whole = text;
  const std::string_view left = base::Trim(whole.substr(0, sign - 1));
  const std::string_view number = base::Trim(whole.substr(sign + 1));
  // A set may have blanks in its name, a measure has none.
  const std::size_t blank = left.find_last_of(" \t");
  const std::size_t kind = std::string_view("><=").find(text[sign - 1]);
  if (kind == std::string_view::npos || blank == std::string_view::npos || !IsNumber(number)) {
    return std::nullopt;
  }
  // By the position in "><=", which must keep this order.
  constexpr std::array kRelations = {TExpectation::TRelation::kAtLeast, TExpectation::TRelation::kAtMost,
                                     TExpectation::TRelation::kEqual};
  return TExpectation{text, std::string(base::Trim(left.substr(0, blank))), std::string(left.substr(blank + 1)),
                      kRelations[kind], std::string(number)};
}

std::string DescribeUnknown(const TExpectation& expectation, const std::vector<std::string>& sets) {
  if (std::find(sets.begin(), sets.end(), expectation.set) == sets.end()) {
    return FormatString("There is no set '%s' (in --expect \"%s\")", expectation.set.c_str(), expectation.text.c_str());
  }
  if (std::find(kMeasureNames.begin(), kMeasureNames.end(), expectation.measure) == kMeasureNames.end()) {
    return FormatString("There is no measure '%s' (in --expect \"%s\")", expectation.measure.c_str(),
                        expectation.text.c_str());
  }
  return {};
}

std::string DescribeMiss(const TExpectation& expectation, const TExperiment& experiment) {
  const auto set = std::find(experiment.sets.begin(), experiment.sets.end(), expectation.set);
  const auto measure = std::find(kMeasureNames.begin(), kMeasureNames.end(), expectation.measure);
  const double mean = MeanOf(experiment, static_cast<std::size_t>(set - experiment.sets.begin()),
                             static_cast<TMeasure>(measure - kMeasureNames.begin()));
  // The locale is "C" by now; elsewhere strtod may stop at the full stop.
  const double number = std::strtod(expectation.number.c_str(), nullptr);
  const std::size_t decimals = Decimals(expectation.number);
  bool holds = false;
  // >= and <= look at the mean itself and not at its digits: 0.4399999 misses 0.44.
  switch (expectation.relation) {
    case TExpectation::TRelation::kAtLeast:
      holds = mean >= number;
      break;
    case TExpectation::TRelation::kAtMost:
      holds = mean <= number;
      break;
    case TExpectation::TRelation::kEqual:
      // As texts: the expectation is of what a table shows, not of the last bits of a double.
      holds = Rounded(mean, decimals) == Rounded(number, decimals);
      break;
  }
  if (holds) {
    return {};
  }
  // Enough decimals that a figure that misses by little does not look as if it fitted.
  return FormatString("Expected \"%s\", but %s of '%s' is %s", expectation.text.c_str(), expectation.measure.c_str(),
                      expectation.set.c_str(), Rounded(mean, std::max<std::size_t>(decimals, 8)).c_str());
}
