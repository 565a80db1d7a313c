// tessimar-experiment: every query, every set of features, measured against the truth in one run.

#include <cstdio>
#include <exception>
#include <new>

#include "base/console.h"
#include "base/memory.h"
#include "base/text.h"
#include "experiments/command-line.h"
#include "experiments/run-experiment.h"

namespace {

int Run(int argc, char** argv) {
  std::string reason;
  auto command = ParseExperimentCommand(argc, argv, reason);
  if (!command) {
    return RefuseExperiment(kExperimentUnusable, reason + " See tessimar-experiment --help.");
  }
  if (command->help || command->version) {
    return base::Print(stdout, command->help ? kExperimentUsage : "tessimar-experiment " TESSIMAR_VERSION "\n")
               ? kExperimentDone
               : RefuseExperiment(kExperimentUnusable, "Standard output cannot be written");
  }
  command->options.version = "tessimar-experiment " TESSIMAR_VERSION;
  base::CatchSignals();
  base::KeepFreedMemory();
  // printf and strtod ask the locale: with decimal commas the tables could not be read elsewhere, and --expect would
  // read 0.44 as 0.
  base::UseClassicNumbers();
  // The libraries of the classifiers tell about their training there.
  std::FILE* const output = base::TakeStandardOutput(false);
  if (output == nullptr) {
    return RefuseExperiment(kExperimentFailed, "Standard output cannot be used");
  }
  return RunExperiment(command->options, output);
}

}  // namespace

int main(int argc, char** argv) {
  base::FillStandardPlaces();
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    return RefuseExperiment(kExperimentFailed, "Out of memory");
  } catch (const std::exception& failure) {
    // Results take their places together at the end: what fails before that, be it for lack of memory, leaves the
    // earlier ones.
    return RefuseExperiment(kExperimentFailed, failure.what());
  }
}
