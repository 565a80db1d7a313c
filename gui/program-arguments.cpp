#include "gui/program-arguments.h"

#include <QCommandLineParser>

#include "base/format-string.h"
#include "gui/eight-bit-text.h"

std::optional<QStringList> TakeArguments(int argc, char** argv, std::string& reason) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) {
    arguments << ToQString(argv[i]);
    // What cannot be read comes back as the replacement character, U+FFFD.
    if (FromQString(arguments.last()) != argv[i]) {
      reason = FormatString("The argument '%s' is not UTF-8.", argv[i]);
      return std::nullopt;
    }
  }
  return arguments;
}

bool ParseArguments(QCommandLineParser& parser, int argc, char** argv, std::string& reason) {
  // A long option behind a single dash is a slip that needs no guessing.
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  // Handed over, since the parser would ask the application object, which may not exist yet.
  const std::optional<QStringList> arguments = TakeArguments(argc, argv, reason);
  if (!arguments) {
    return false;
  }
  const bool isParsed = parser.parse(*arguments);
  if (!isParsed) {
    reason = FromQString(parser.errorText());
  }
  return isParsed;
}

std::string FaultOfNames(const QCommandLineParser& parser, std::initializer_list<const char*> options) {
  for (const char* option : options) {
    for (const QString& value : parser.values(option)) {
      if (value.startsWith('-')) {
        const std::string name = FromQString(value);
        return FormatString("'%s' behind '--%s' looks like an option; as a name it is './%s'.", name.c_str(), option,
                            name.c_str());
      }
    }
  }
  return {};
}
