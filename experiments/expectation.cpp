#include "experiments/expectation.h"

#include <algorithm>
#include <cstdlib>
#include <regex>

#include "base/format-string.h"

namespace {

std::size_t Decimals(const std::string& number) {
  const std::size_t point = number.find('.');
  return point == std::string::npos ? 0 : number.size() - point - 1;
}

std::string Rounded(double number, std::size_t decimals) {
  return FormatString("%.*f", static_cast<int>(decimals), number);
}

}  // namespace

std::optional<TExpectation> ParseExpectation(const std::string& text) {
  static const std::regex form(R"(\s*(\S|\S.*\S)\s+([a-z0-9_]+)\s*(>=|<=|==)\s*([0-9]+(?:\.[0-9]{1,15})?)\s*)");
  std::smatch parts;
  if (!std::regex_match(text, parts, form)) {
    return std::nullopt;
  }
  const auto relation = parts[3] == ">="   ? TExpectation::TRelation::kAtLeast
                        : parts[3] == "<=" ? TExpectation::TRelation::kAtMost
                                           : TExpectation::TRelation::kEqual;
  return TExpectation{text, parts[1], parts[2], relation, parts[4]};
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
  const double number = std::strtod(expectation.number.c_str(), nullptr);
  const std::size_t decimals = Decimals(expectation.number);
  bool holds = false;
  switch (expectation.relation) {
    case TExpectation::TRelation::kAtLeast:
      holds = mean >= number;
      break;
    case TExpectation::TRelation::kAtMost:
      holds = mean <= number;
      break;
    case TExpectation::TRelation::kEqual:
      holds = Rounded(mean, decimals) == Rounded(number, decimals);
      break;
  }
  if (holds) {
    return {};
  }
  return FormatString("Expected \"%s\", but %s of '%s' is %s", expectation.text.c_str(), expectation.measure.c_str(),
                      expectation.set.c_str(), Rounded(mean, std::max<std::size_t>(decimals, 8)).c_str());
}
