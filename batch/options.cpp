#include "batch/options.h"

#include <QCommandLineParser>

#include "gui/eight-bit-text.h"

const char* const kUsage =
    R"(Usage: tessimar-batch [--pictures DIR] [--variables FILE] [--rankings DIR] [--runs DIR]
                      [--seed N] [--plugins DIR]... [--verbose] [SCRIPT]
       tessimar-batch --check-plugin FILE

Runs each line of SCRIPT, or of standard input when SCRIPT is - or left out, as if
it were typed into the command line of the workbench, and prints what the output
pane would show.

  --pictures DIR    save every dialog as DIR/001.png, DIR/002.png, ...
                    (without it dialogs are skipped)
  --variables FILE  write the variables at the end: name, type, description
  --rankings DIR    write each ranking at the end to DIR/NAME.tsv
  --runs DIR        write each ranking at the end to DIR/NAME.run, in the form that
                    evaluation programs of information retrieval read
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
used, 130 after Ctrl-C (or SIGTERM or SIGHUP: the first one ends the run after the
command under way, with tables and history), 141 if nobody reads the output any
more.
)";

std::optional<TOptions> ParseOptions(int argc, char** argv, std::string& reason) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) {
    arguments << ToQString(argv[i]);
  }
  QCommandLineParser parser;
  parser.addOptions({{"pictures", "", "DIR"},
                     {"variables", "", "FILE"},
                     {"rankings", "", "DIR"},
                     {"runs", "", "DIR"},
                     {"seed", "", "N"}});
  parser.addOptions({{"plugins", "", "DIR"}, {"check-plugin", "", "FILE"}});
  parser.addOptions({{{"h", "help"}, ""}, QCommandLineOption("version"), QCommandLineOption("verbose")});
  if (!parser.parse(arguments)) {
    reason = FromQString(parser.errorText());
    return std::nullopt;
  }
  for (const char* name : {"pictures", "variables", "rankings", "seed", "plugins", "check-plugin"}) {
    if (parser.values(name).contains(QString())) {
      reason = std::string("The value of '--") + name + "' is empty.";
      return std::nullopt;
    }
  }
  const QStringList scripts = parser.positionalArguments();
  if (scripts.size() > 1 || scripts.contains(QString())) {
    reason = scripts.size() > 1 ? "More than one script was given." : "The name of the script is empty.";
    return std::nullopt;
  }
  if (parser.isSet("check-plugin") && (parser.optionNames().size() > 1 || !scripts.isEmpty())) {
    reason = "'--check-plugin' takes one file and goes with nothing else.";
    return std::nullopt;
  }
  TOptions options;
  if (parser.isSet("seed")) {
    bool isNumber = false;
    options.seed = parser.value("seed").toUInt(&isNumber);
    if (!isNumber) {
      reason = "The value of '--seed' is no number from 0 to 4294967295.";
      return std::nullopt;
    }
  }
  options.pictures = FromQString(parser.value("pictures"));
  options.variables = FromQString(parser.value("variables"));
  options.rankings = FromQString(parser.value("rankings"));
  options.runs = FromQString(parser.value("runs"));
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
