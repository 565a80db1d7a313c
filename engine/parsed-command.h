#pragma once

#include <string>
#include <vector>

/// What the parser made of one line. Parameters stay text, double quotes included; what they are meant to be is decided
/// by each command.
struct TParsedCommand {
  /// "assign", "assignfunction" or "function".
  std::string Type;
  /// Name of the source variable. Only for "assign".
  std::string Source;
  /// Name of the destination variable. For "assign" and "assignfunction".
  std::string Destination;
  /// Name of the command. For "assignfunction" and "function".
  std::string Function;
  /// For "assignfunction" and "function".
  std::vector<std::string> Parameters;
};
