#include "experiments/command-line.h"

#include <algorithm>

#include <QCommandLineParser>
#include <QRegularExpression>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "classifiers/classifier-types.h"
#include "experiments/expectation.h"
#include "gui/eight-bit-text.h"
#include "gui/program-arguments.h"
#include "segmentation/segmentation-methods.h"

// An option stands in four places: here, in docs/tessimar-experiment.md and in both completions. Tests compare them.
const char* const kExperimentUsage =
    R"(Usage: tessimar-experiment --truth FILE|DIR --out DIR [OPTIONS] COLLECTION
       tessimar-experiment --classes --out DIR [OPTIONS] COLLECTION
       tessimar-experiment --measure --qrels FILE --out DIR RUN...

Ranks the collection for every tag and every picture that carries it, by every set
of features, and measures the rankings.

  --truth FILE|DIR  the tags of the pictures: an annotation file (.txt), a table
                    "file TAB tag", or a directory of annotation files; repeatable
  --classes         COLLECTION is a directory of directories, each of them a tag
  --out DIR         where the results go
  --features SETS   sets of features with commas between them, a+b for a sum
                    (default: each feature, and all together)
  --plugins DIR     load feature plug-ins from there too; repeatable
  --queries FILE    use only these pictures as queries: names, one a line
  --keep-query      leave each query in its own ranking
  --depth N         ranks that the runs show (default 1000)
  --concepts nearest,svm,neural
                    teach each of these classifiers with half of each tag's pictures,
                    and ask it about the segments of the others
  --segments grid   the segments that concepts are taught with
  --seed N          for bootstrap, randomisation test and concepts (default 1)
  --expect "SET MEASURE>=NUMBER"
                    fail if a mean is not so; >=, <= or ==; repeatable
  --step extract|rank|report
                    do one step only
  --part K/N        do part K of N of the step
  --measure         measure runs that other programs wrote
  --qrels FILE      what is relevant to their topics
  --quiet           print errors only
  -h, --help        print this text
  --version         print the version

Exit status: 0, 1 if an expectation does not hold or a step failed, 2 for wrong
usage or a file or directory that cannot be used, 3 if all is done but something
was skipped (see damage.tsv), 130 after Ctrl-C.
)";

namespace {

std::vector<std::string> Texts(const QStringList& list) {
  std::vector<std::string> texts;
  for (const QString& text : list) {
    texts.push_back(FromQString(text));
  }
  return texts;
}

/// Reads options one after the other; the first fault stays.
class TOptionReader {
 public:
  explicit TOptionReader(const QCommandLineParser& theParser) : parser(theParser) {}

  bool Has(const char* name) const { return parser.isSet(name); }
  std::vector<std::string> All(const char* name) const { return Texts(parser.values(name)); }

  /// The value of an option that may be given once.
  std::string One(const char* name) {
    // The parser keeps the last of several values, and whoever gave two would not notice.
    if (parser.values(name).size() > 1) {
      Refuse(FormatString("'--%s' was given twice.", name));
    }
    return FromQString(parser.value(name));
  }

  std::uint32_t Number(const char* name, std::uint32_t least, std::uint32_t value) {
    const std::string text = One(name);
    if (Has(name)) {
      bool isNumber = false;
      // Always read as in the locale "C". 32 bits are what the Mersenne twister is seeded with.
      value = ToQString(text).toUInt(&isNumber);
      if (!isNumber || value < least) {
        Refuse(FormatString("The value of '--%s' is no number from %u to 4294967295.", name, least));
      }
    }
    return value;
  }

  TPart Part() {
    const std::string text = One("part");
    if (!Has("part")) {
      return {};
    }
    // Up to nine digits, which fit into the number that they are turned into.
    static const QRegularExpression form("^([0-9]{1,9})/([0-9]{1,9})$");
    const auto match = form.match(ToQString(text));
    const TPart part = {match.captured(1).toUInt(), match.captured(2).toUInt()};
    if (!match.hasMatch() || part.number < 1 || part.number > part.count) {
      Refuse(FormatString("The value of '--part', '%s', is not K/N with K from 1 to N.", text.c_str()));
      return {};
    }
    return part;
  }

  TStep Step() {
    const std::string text = One("step");
    if (!Has("step")) {
      return TStep::kAll;
    }
    if (text != "extract" && text != "rank" && text != "report") {
      Refuse(FormatString("The value of '--step', '%s', is not extract, rank or report.", text.c_str()));
    }
    return text == "extract" ? TStep::kExtract : text == "rank" ? TStep::kRank : TStep::kReport;
  }

  std::vector<TExpectation> Expectations() {
    std::vector<TExpectation> expectations;
    // The form is tested now; whether set and measure exist is known only when the sets are.
    for (const std::string& text : All("expect")) {
      if (const auto expectation = ParseExpectation(text)) {
        expectations.push_back(*expectation);
      } else {
        Refuse(FormatString("The value of '--expect', '%s', is not of the form SET MEASURE>=NUMBER.", text.c_str()));
      }
    }
    return expectations;
  }

  std::vector<std::string> Sets() {
    const std::string text = One("features");
    // Commas part the sets, as blanks may stand in their names.
    // Nothing between two commas is a set too, which is refused for its name.
    return Has("features") ? Texts(ToQString(text).split(',')) : std::vector<std::string>();
  }

  std::vector<std::string> Classifiers() {
    const std::string text = One("concepts");
    if (!Has("concepts")) {
      return {};
    }
    std::vector<std::string> names = Texts(ToQString(text).split(','));
    for (auto name = names.begin(); name != names.end(); ++name) {
      if (FindClassifierType(*name) == nullptr) {
        Refuse(FormatString("There is no classifier '%s' (in --concepts); there are %s.", name->c_str(),
                            ClassifierNames().c_str()));
      } else if (std::find(names.begin(), name, *name) != name) {
        Refuse(FormatString("The classifier '%s' stands twice in --concepts.", name->c_str()));
      }
    }
    return names;
  }

  std::string Segments() {
    const std::string text = One("segments");
    if (Has("segments") && text != kGridMethod) {
      Refuse(FormatString("The value of '--segments', '%s', is not grid.", text.c_str()));
    }
    if (Has("segments") && !Has("concepts")) {
      Refuse("'--segments' belongs to '--concepts'.");
    }
    // Also where nothing is taught, since record.json always names it.
    return std::string(kGridMethod);
  }

  void Refuse(const std::string& fault) {
    if (reason.empty()) {
      reason = fault;
    }
  }

  const std::string& GetReason() const { return reason; }

 private:
  static std::string ClassifierNames() {
    std::vector<std::string> names;
    for (const TClassifierType& type : ClassifierTypes()) {
      names.emplace_back(type.name);
    }
    return base::Join(names, ", ");
  }

  const QCommandLineParser& parser;
  std::string reason;
};

/// Faults that lie in how options go together.
void CheckCollection(const TExperimentOptions& options, TOptionReader& reader) {
  if (options.truth.empty() && !options.hasClasses) {
    reader.Refuse("There is no truth: '--truth' or '--classes' is missing.");
  }
  if (reader.Has("part") && options.step != TStep::kExtract && options.step != TStep::kRank) {
    reader.Refuse("'--part' belongs to '--step extract' or '--step rank'.");
  }
  if (reader.Has("qrels")) {
    reader.Refuse("'--qrels' belongs to '--measure'.");
  }
}

void CheckMeasure(const TExperimentOptions& options, TOptionReader& reader) {
  // What a measurement of finished runs has no use for. To ignore it would look as if it had been obeyed.
  // All but --out, --seed, --expect and --quiet, which mean the same for both kinds of input.
  for (const char* name : {"truth", "classes", "features", "plugins", "queries", "keep-query", "depth", "concepts",
                           "segments", "step", "part"}) {
    if (reader.Has(name)) {
      reader.Refuse(FormatString("'--%s' does not go with '--measure'.", name));
    }
  }
  if (options.judgements.empty()) {
    reader.Refuse("'--qrels' is missing.");
  }
}

/// The arguments that are no options: a collection, or runs.
void TakeInputs(const std::vector<std::string>& inputs, TExperimentOptions& options, TOptionReader& reader) {
  if (reader.Has("measure")) {
    CheckMeasure(options, reader);
    options.runs = inputs;
  } else {
    CheckCollection(options, reader);
    options.collection = inputs.empty() ? std::string() : inputs.front();
  }
  // An empty name is most often a variable of the shell that is not set.
  if (inputs.empty() || std::find(inputs.begin(), inputs.end(), std::string()) != inputs.end()) {
    reader.Refuse(reader.Has("measure") ? "The runs are missing." : "The collection is missing.");
  }
  // An unquoted pattern of the shell may have become several names.
  if (inputs.size() > 1 && !reader.Has("measure")) {
    reader.Refuse("More than one collection was given.");
  }
}

void AddOptions(QCommandLineParser& parser) {
  for (const char* name : {"truth", "out", "features", "plugins", "queries", "depth", "concepts", "segments", "seed",
                           "expect", "step", "part", "qrels"}) {
    // Without a description: --help prints kExperimentUsage.
    parser.addOption({name, "", "VALUE"});
  }
  for (const char* name : {"classes", "keep-query", "measure", "quiet", "version"}) {
    parser.addOption(QCommandLineOption(name));
  }
  parser.addOption({{"h", "help"}, ""});
}

/// What is wrong with the options' values, or nothing.
std::string FaultOfValues(const QCommandLineParser& parser) {
  // "--out=" is a slip of a script whose variable is empty, and "--features=" would silently mean all features.
  for (const QString& name : parser.optionNames()) {
    if (parser.values(name).contains(QString())) {
      return "The value of '--" + FromQString(name) + "' is empty.";
    }
  }
  return FaultOfNames(parser, {"truth", "out", "plugins", "queries", "qrels"});
}

}  // namespace

std::optional<TExperimentCommand> ParseExperimentCommand(int argc, char** argv, std::string& reason) {
  QCommandLineParser parser;
  AddOptions(parser);
  if (!ParseArguments(parser, argc, argv, reason)) {
    return std::nullopt;
  }
  TExperimentCommand command;
  // Before the values are looked at, so that --help answers whatever is wrong with them.
  command.help = parser.isSet("help");
  command.version = parser.isSet("version");
  if (command.help || command.version) {
    return command;
  }
  reason = FaultOfValues(parser);
  if (!reason.empty()) {
    return std::nullopt;
  }
  TOptionReader reader(parser);
  TExperimentOptions& options = command.options;
  options.truth = reader.All("truth");
  options.hasClasses = reader.Has("classes");
  options.features = reader.Sets();
  options.plugins = reader.All("plugins");
  options.queries = reader.One("queries");
  options.keepsQuery = reader.Has("keep-query");
  options.depth = reader.Number("depth", 1, 1000);
  options.classifiers = reader.Classifiers();
  options.segments = reader.Segments();
  options.seed = reader.Number("seed", 0, 1);
  options.expectations = reader.Expectations();
  options.step = reader.Step();
  options.part = reader.Part();
  options.isQuiet = reader.Has("quiet");
  options.out = reader.One("out");
  options.judgements = reader.One("qrels");
  if (options.out.empty()) {
    reader.Refuse("'--out' is missing.");
  }
  TakeInputs(Texts(parser.positionalArguments()), options, reader);
  if (!reader.GetReason().empty()) {
    reason = reader.GetReason();
    return std::nullopt;
  }
  // Names are appended to it everywhere.
  options.out = base::WithTrailingSeparator(options.out);
  return command;
}
