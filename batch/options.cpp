#include "batch/options.h"

#include <string_view>

#include <QCommandLineParser>

#include "base/format-string.h"
#include "gui/eight-bit-text.h"
#include "gui/program-arguments.h"

// An option stands in four places: here, in docs/tessimar-batch.md and in both completions. Tests compare them.
const char* const kUsage =
    R"(Usage: tessimar-batch [OPTION]... [-e LINE]... [SCRIPT]
       tessimar-batch --check-plugin FILE

Runs each line of SCRIPT, or of standard input when SCRIPT is - or left out, as if
it were typed into the command line of the workbench, and prints what the output
pane would show. Which lines of the script failed is told on standard error.

  -e LINE           run this line; may be repeated. All of them run before SCRIPT,
                    and standard input is read only if SCRIPT is -
  --pictures DIR    save every dialog as DIR/001.png, DIR/002.png, ...
                    (without it dialogs are skipped)
  --variables FILE  write the variables at the end: name, type, description
  --rankings DIR    write each ranking at the end to DIR/NAME.tsv
  --runs DIR        write each ranking at the end to DIR/NAME.run, in the form that
                    evaluation programs of information retrieval read
  --segments FILE   write all segments at the end: variable, picture, x, y, width,
                    height, label, features
  --seed N          draw the same lots in every run (neural networks, the map)
  --plugins DIR     load the feature plug-ins of DIR too, behind those of the working
                    directory, in the order of their names (may be repeated)
  --check-plugin FILE
                    try a feature plug-in on made pictures in a process of its own,
                    and print what it does wrong
  --verbose         show on standard error what the training libraries print
  -h, --help        print this text
  --version         print the version

Exit status: 0 if every line succeeded or the plug-in is sound, 1 if a line failed
or the plug-in has a fault, 2 for wrong usage or a file or directory that cannot be
used, 3 if every line succeeded but a picture or a stored feature could not be
read, or not whole, 130 after Ctrl-C (or SIGTERM or SIGHUP: the first one ends the
run after the command under way, with tables and history), 141 if nobody reads the
output any more.
)";

namespace {

void AddOptions(QCommandLineParser& parser) {
  // All of them without a description: --help prints kUsage.
  QCommandLineOption line("e", "", "LINE");
  // "-e" takes its line also without a blank, as other programs of a shell do.
  line.setFlags(QCommandLineOption::ShortOptionStyle);
  parser.addOption(line);
  parser.addOptions({{"pictures", "", "DIR"}, {"variables", "", "FILE"}, {"rankings", "", "DIR"}, {"runs", "", "DIR"}});
  parser.addOptions(
      {{"segments", "", "FILE"}, {"seed", "", "N"}, {"plugins", "", "DIR"}, {"check-plugin", "", "FILE"}});
  parser.addOptions({{{"h", "help"}, ""}, QCommandLineOption("version"), QCommandLineOption("verbose")});
}

/// What is wrong with the options' values, or nothing. Of several faults the last is told: one is enough, and the order
/// of the options has no meaning.
std::string FaultOfValues(const QCommandLineParser& parser) {
  std::string reason;
  // -e is not among them: its value may be any line, and it may be repeated.
  for (const char* name :
       {"pictures", "variables", "rankings", "runs", "segments", "seed", "plugins", "check-plugin"}) {
    // --plugins may come several times.
    const QStringList values = parser.values(name);
    // The parser would take the last one without a word.
    if (values.size() > 1 && std::string_view(name) != "plugins") {
      reason = std::string("There is more than one '--") + name + "'.";
    } else if (values.contains(QString())) {
      reason = std::string("There is no value behind '--") + name + "'.";
    }
  }
  // A --seed that begins with a dash is told further down, as no number.
  return !reason.empty() ? reason
                         : FaultOfNames(parser, {"pictures", "variables", "rankings", "runs", "segments", "plugins",
                                                 "check-plugin"});
}

}  // namespace

std::optional<TOptions> ParseOptions(int argc, char** argv, std::string& reason) {
  QCommandLineParser parser;
  AddOptions(parser);
  if (!ParseArguments(parser, argc, argv, reason)) {
    return std::nullopt;
  }
  reason = FaultOfValues(parser);
  if (!reason.empty()) {
    return std::nullopt;
  }
  const QStringList scripts = parser.positionalArguments();
  if (scripts.size() > 1 || scripts.contains(QString())) {
    reason = scripts.size() > 1 ? "There is more than one script: '" + FromQString(scripts[1]) + "'."
                                : "The name of the script is empty.";
    return std::nullopt;
  }
  if (parser.isSet("check-plugin") && (parser.optionNames().size() > 1 || !scripts.isEmpty())) {
    reason = "'--check-plugin' takes one file and goes with nothing else.";
    return std::nullopt;
  }
  TOptions options;
  if (parser.isSet("seed")) {
    bool isNumber = false;
    // 32 bits without a sign, as srand() takes them, read as in the locale "C".
    options.seed = parser.value("seed").toUInt(&isNumber);
    if (!isNumber) {
      reason = "'" + FromQString(parser.value("seed")) + "' behind '--seed' is no number from 0 to 4294967295.";
      return std::nullopt;
    }
  }
  options.pictures = FromQString(parser.value("pictures"));
  options.variables = FromQString(parser.value("variables"));
  options.rankings = FromQString(parser.value("rankings"));
  options.segments = FromQString(parser.value("segments"));
  for (const QString& text : parser.values("e")) {
    options.lines.push_back(FromQString(text));
  }
  // With -e and without a script nothing is read: a job without standard input would wait forever.
  options.onlyLines = !options.lines.empty() && scripts.isEmpty();
  options.runs = FromQString(parser.value("runs"));
  // "-" is standard input, as for other programs of a shell.
  options.script = scripts.isEmpty() || scripts.first() == "-" ? std::string() : FromQString(scripts.first());
  for (const QString& directory : parser.values("plugins")) {
    options.plugins.push_back(FromQString(directory));
  }
  options.checkedPlugin = FromQString(parser.value("check-plugin"));
  options.verbose = parser.isSet("verbose");
  options.help = parser.isSet("help");
  options.version = parser.isSet("version");
  return options;
}
