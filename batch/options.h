#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the command line of tessimar-batch asks for.
struct TOptions {
  /// Directory for the pictures of the dialogs; empty: dialogs are skipped.
  std::string pictures;
  /// File for the rows of the Variables table; empty: none.
  std::string variables;
  /// Directory for one table a ranking; empty: none.
  std::string rankings;
  /// File for one table of all segments; empty: none.
  std::string segments;
  /// Command lines, run before the script.
  std::vector<std::string> lines;
  /// Directory for one run a ranking; empty: none.
  std::string runs;
  /// Script file; empty: standard input.
  std::string script;
  /// Directories with plug-ins, beside the working directory.
  std::vector<std::string> plugins;
  /// Plug-in to be tried in place of running lines; empty: none.
  std::string checkedPlugin;
  /// There are lines and no script: nothing is read.
  bool onlyLines = false;
  /// The seed of all random numbers. Without one the network draws its weights by the clock, and the map has the
  /// directions of an unseeded rand(), the same in every run.
  std::optional<std::uint32_t> seed;
  /// What the training libraries print goes to standard error.
  bool verbose = false;
  bool help = false;
  bool version = false;
};

/// The text that --help prints.
extern const char* const kUsage;

/// Reads the arguments behind the program's name. Nothing, and the reason, if they are wrong.
std::optional<TOptions> ParseOptions(int argc, char** argv, std::string& reason);
