#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// What the text of a saved support vector machine says of itself.
struct TSvmModelFacts {
  /// As the library numbers them: 0 linear, 1 polynomial, 2 radial basis function.
  std::int32_t kernelType = 0;
  /// The number of elements of each support vector; 0 if there is none.
  std::uint32_t length = 0;
};

/// Holds the text of a saved model against what the classifier can have saved: one or two classes with the labels 1 and
/// -1, all counts in agreement, and support vectors of one length with an element for every index from 0. The library's
/// own reader trusts the counts and would read and write past its arrays.
///
/// Returns nothing if the text is anything else.
std::optional<TSvmModelFacts> ParseSvmModel(std::string_view text);
