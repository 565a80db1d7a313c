#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>

#include "engine/parsed-command.h"

/// Turns a line into a call, a call with destination, or a copy:
///
///     name ( [parameter {, parameter}] ) rest
///     destination = name ( [parameter {, parameter}] ) rest
///     destination = source
///
/// The line is folded to lower case, and blanks and tabs outside double quotes go. After that the parser only looks for
/// the first "=", the first brackets and the commas, wherever they stand: quotes do not protect them.
class TCommandParser {
 public:
  /// Null if the line has none of the forms; the reason has been printed.
  std::unique_ptr<TParsedCommand> Parse(std::string line) const;

  void SetOutput(const boost::function<void(std::string)>& newOutput) { output = newOutput; }

 private:
  static std::unique_ptr<TParsedCommand> ParseAssign(const std::string& destination, const std::string& source);
  std::unique_ptr<TParsedCommand> ParseFunction(const std::string& line) const;
  std::unique_ptr<TParsedCommand> ParseAssignFunction(const std::string& destination,
                                                      const std::string& rightHandSide) const;
  static void ParseParameters(const std::string& text, std::vector<std::string>& parameters);

  std::unique_ptr<TParsedCommand> Fail(const std::string& reason) const;

  boost::function<void(std::string)> output;
};
