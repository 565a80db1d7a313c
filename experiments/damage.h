#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// A file or a line of a file that was not used, and why. Line 0 stands for the whole file.
struct TDamage {
  std::string file;
  std::size_t line;
  std::string reason;
};

using TDamageList = std::vector<TDamage>;
