#pragma once

#include <optional>
#include <string>

#include "experiments/options.h"

/// The text that --help prints.
extern const char* const kExperimentUsage;

/// What the arguments behind the program's name ask for.
struct TExperimentCommand {
  TExperimentOptions options;
  bool help = false;
  bool version = false;
};

/// Nothing, and the reason, if they are wrong.
std::optional<TExperimentCommand> ParseExperimentCommand(int argc, char** argv, std::string& reason);
