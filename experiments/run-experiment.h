#pragma once

#include <cstdio>

#include "experiments/options.h"

/// Exit statuses of tessimar-experiment.
constexpr int kExperimentDone = 0;
constexpr int kExperimentFailed = 1;
constexpr int kExperimentUnusable = 2;
/// Something was skipped: damage.tsv says what.
constexpr int kExperimentDamaged = 3;
/// As a shell reports a program that Ctrl-C ended.
constexpr int kExperimentInterrupted = 130;

/// Prints a reason to standard error, and returns the status.
int RefuseExperiment(int status, const std::string& reason);

/// Runs what the options ask for, and returns the exit status. Messages go to standard error, the figures of the sets
/// to `output`.
int RunExperiment(const TExperimentOptions& options, std::FILE* output);
