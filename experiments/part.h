#pragma once

#include <cstddef>
#include <string>
#include <utility>

/// Part K of N of a step, counted from 1.
struct TPart {
  std::size_t number = 1;
  std::size_t count = 1;

  /// First and end of the part's share of `total` things: parts take them in order, and their sizes differ by one at
  /// most.
  std::pair<std::size_t, std::size_t> ShareOf(std::size_t total) const {
    return {total * (number - 1) / count, total * number / count};
  }

  /// The mark of the part in a file name: ".K-of-N", and nothing where there is only one.
  std::string GetMark() const {
    return count == 1 ? std::string() : "." + std::to_string(number) + "-of-" + std::to_string(count);
  }
};
