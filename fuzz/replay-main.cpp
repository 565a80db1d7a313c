// Calls a target with the files that the arguments name, or that lie in directories they name, in builds without
// libFuzzer.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "fuzz/input.h"
#include "tests/support/scratch-directory.h"

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (std::filesystem::is_directory(argv[i])) {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
        files.push_back(entry.path());
      }
    } else {
      files.emplace_back(argv[i]);
    }
  }
  std::sort(files.begin(), files.end());
  LLVMFuzzerInitialize(&argc, &argv);
  for (const std::filesystem::path& file : files) {
    // The last name on the screen is the one that stopped the program.
    std::fprintf(stderr, "%s\n", file.c_str());
    const std::string bytes = FileBytes(file);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  std::fprintf(stderr, "%zu inputs\n", files.size());
  return files.empty() ? 1 : 0;
}
