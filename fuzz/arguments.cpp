// The arguments of tessimar-batch and of tessimar-experiment: a line each.

#include <vector>

#include "batch/options.h"
#include "experiments/command-line.h"
#include "fuzz/input.h"

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Arguments hold no zero bytes, and a line of nothing is one that is empty.
  std::string text(reinterpret_cast<const char*>(data), size);
  std::erase(text, '\0');
  std::vector<std::string> lines = {"program"};
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  std::vector<char*> arguments;
  arguments.reserve(lines.size() + 1);
  for (std::string& line : lines) {
    arguments.push_back(line.data());
  }
  const int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  std::string reason;
  Require(ParseOptions(count, arguments.data(), reason).has_value() == reason.empty());
  reason.clear();
  Require(ParseExperimentCommand(count, arguments.data(), reason).has_value() == reason.empty());
  return 0;
}
