// What the steps of an experiment read from each other. The first line of the input names a file that a whole
// experiment left behind, the rest is what that file holds when the last step, or all of them, run again.

#include <algorithm>
#include <filesystem>

#include "experiments/run-experiment.h"
#include "fuzz/input.h"
#include "fuzz/workshop.h"

namespace filesystem = std::filesystem;

namespace {

TExperimentOptions OptionsFor(TStep step) {
  TExperimentOptions options;
  options.collection = "photos";
  options.truth = {"tree.txt"};
  options.features = {"hsv", "lbp"};
  options.out = "out/";
  options.step = step;
  options.isQuiet = true;
  options.version = "fuzz";
  return options;
}

}  // namespace

void FillWorkshop() {
  MakeTinyPictures();
  MakeFile("tree.txt", "1\n2\n3\n");
  RunExperiment(OptionsFor(TStep::kAll), stdout);
  filesystem::rename("out", "made");
}

void TryInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = std::min(input.find('\n'), input.size());
  const bool isReport = input.starts_with("report ");
  const std::string name = input.substr(isReport ? 7 : 0, end - (isReport ? 7 : 0));
  // Only the files that are there are replaced: a name might lead out of the directory.
  filesystem::copy("made", "out", filesystem::copy_options::recursive);
  for (const auto& entry : filesystem::recursive_directory_iterator("out")) {
    if (entry.is_regular_file() && filesystem::relative(entry.path(), "out") == name) {
      MakeFile(entry.path(), input.substr(std::min(end + 1, input.size())));
    }
  }
  RunExperiment(OptionsFor(isReport ? TStep::kReport : TStep::kAll), stdout);
}
