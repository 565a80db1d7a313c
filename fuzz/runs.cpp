// Judgements and runs of other programs. The first line of the input is "measure" for reading them only, anything else
// for the whole measurement with its report; then the judgements and two runs.

#include <cmath>

#include "experiments/run-experiment.h"
#include "experiments/run-reader.h"
#include "fuzz/input.h"
#include "fuzz/workshop.h"

namespace {

void RequireMeasures(const TMeasuredRun& run, const TJudgements& judgements) {
  Require(run.results.size() == judgements.qids.size());
  for (const TTopicResult& result : run.results) {
    for (const double measure : result.measures) {
      Require(measure >= 0 && measure <= 1);
    }
  }
}

}  // namespace

void FillWorkshop() {}

void TryInput(const std::uint8_t* data, std::size_t size) {
  const auto parts = PartsOf(data, size, 4);
  MakeFile("qrels.txt", parts[1]);
  MakeFile("one.run", parts[2]);
  MakeFile("two.run", parts[3]);
  if (parts[0] == "measure\n") {
    TDamageList damage;
    std::string reason;
    const auto judgements = ReadJudgements("qrels.txt", damage, reason);
    Require(judgements.has_value());
    for (const char* path : {"one.run", "two.run"}) {
      if (const auto run = ReadRun(path, *judgements, damage, reason)) {
        RequireMeasures(*run, *judgements);
      }
    }
    return;
  }
  TExperimentOptions options;
  options.judgements = "qrels.txt";
  options.runs = {"one.run", "two.run"};
  options.out = "out/";
  options.isQuiet = true;
  options.version = "fuzz";
  RunExperiment(options, stdout);
}
