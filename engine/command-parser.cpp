#include "engine/command-parser.h"

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace {

/// Without the blanks and tabs that lie outside double quotes. Quotes pair up from the right: in a line with an odd
/// number of them the quoted stretch runs from the rightmost one towards the start.
std::string RemoveBlanks(const std::string& line) {
  std::string kept;
  kept.reserve(line.size());
  bool quoted = false;
  for (std::size_t i = line.size(); i-- > 0;) {
    const char character = line[i];
    if (character == '"') {
      quoted = !quoted;
    }
    if (quoted || (character != ' ' && character != '\t')) {
      kept += character;
    }
  }
  std::reverse(kept.begin(), kept.end());
  return kept;
}

}  // namespace

std::unique_ptr<TParsedCommand> TCommandParser::Parse(std::string line) const {
  // Folded as a whole, strings included: that is why paths find their files whatever their case, and why names of
  // features and tags have no capitals.
  line = RemoveBlanks(base::FoldCase(std::move(line)));
  // The first one, even inside of quotes: a file name with "=" cannot be a parameter of a command without destination.
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) {
    return ParseFunction(line);
  }
  const std::string destination = line.substr(0, equals);
  const std::string rightHandSide = line.substr(equals + 1);
  if (destination.empty()) {
    return Fail("Destination variable not specified");
  }
  if (rightHandSide.empty()) {
    return Fail("Source variable not specified");
  }
  if (rightHandSide.find('(') == std::string::npos) {
    return ParseAssign(destination, rightHandSide);
  }
  return ParseAssignFunction(destination, rightHandSide);
}

std::unique_ptr<TParsedCommand> TCommandParser::ParseAssign(const std::string& destination, const std::string& source) {
  auto command = std::make_unique<TParsedCommand>();
  command->Type = "assign";
  command->Destination = destination;
  command->Source = source;
  return command;
}

std::unique_ptr<TParsedCommand> TCommandParser::ParseFunction(const std::string& line) const {
  const std::size_t open = line.find('(');
  const std::size_t close = line.find(')');
  // The first brackets of either kind. What follows the closing one is not looked at.
  if (open == std::string::npos || close == std::string::npos || open == 0 || close <= open) {
    return Fail("Syntax error while parsing function call");
  }
  auto command = std::make_unique<TParsedCommand>();
  command->Type = "function";
  command->Function = line.substr(0, open);
  ParseParameters(line.substr(open + 1, close - open - 1), command->Parameters);
  return command;
}

std::unique_ptr<TParsedCommand> TCommandParser::ParseAssignFunction(const std::string& destination,
                                                                    const std::string& rightHandSide) const {
  auto command = ParseFunction(rightHandSide);
  if (command) {
    command->Type = "assignfunction";
    command->Destination = destination;
  }
  return command;
}

void TCommandParser::ParseParameters(const std::string& text, std::vector<std::string>& parameters) {
  parameters.clear();
  std::size_t start = 0;
  // A comma cuts even between double quotes: the language has no way to write one in a parameter.
  for (std::size_t comma = text.find(','); comma != std::string::npos; comma = text.find(',', start)) {
    // Blanks went before; what is trimmed here are line ends and the like that came with a pasted text.
    parameters.emplace_back(base::Trim(std::string_view(text).substr(start, comma - start)));
    start = comma + 1;
  }
  const std::string_view last = base::Trim(std::string_view(text).substr(start));
  // "f()" has no parameter, while "f(a,)" has two, the second empty.
  if (!last.empty() || !parameters.empty()) {
    parameters.emplace_back(last);
  }
}

std::unique_ptr<TParsedCommand> TCommandParser::Fail(const std::string& reason) const {
  if (output) {
    output(reason);
  }
  return nullptr;
}
