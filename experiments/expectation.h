#pragma once

#include <optional>
#include <string>

#include "experiments/experiment.h"
#include "experiments/options.h"

/// Reads "SET MEASURE>=NUMBER", with >=, <= or ==. Nothing if the text is of another form.
std::optional<TExpectation> ParseExpectation(const std::string& text);

/// Why an expectation cannot be tested on these sets; empty if it can.
std::string DescribeUnknown(const TExpectation& expectation, const std::vector<std::string>& sets);

/// Both figures in a sentence, if the expectation does not hold; otherwise empty. The set and the measure are known.
std::string DescribeMiss(const TExpectation& expectation, const TExperiment& experiment);
