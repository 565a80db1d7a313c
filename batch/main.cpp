// tessimar-batch: the workbench without a screen, for servers, scripts and tests. The same engine runs with a stream of
// text in place of the window; dialogs are made on the toolkit's offscreen platform.

#include <cstdio>
#include <exception>
#include <memory>
#include <optional>

#include <QApplication>
#include <boost/bind/bind.hpp>

#include "base/abandoned-files.h"
#include "base/console.h"
#include "base/file.h"
#include "base/format-string.h"
#include "base/memory.h"
#include "base/native-path.h"
#include "base/text.h"
#include "base/trial.h"
#include "batch/options.h"
#include "batch/picture-saver.h"
#include "batch/stream-view.h"
#include "batch/tables.h"
#include "engine/ctrl-main.h"
#include "features/plugin-doctor.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"

namespace {

constexpr int kSucceeded = 0;
constexpr int kLineFailed = 1;
constexpr int kUnusable = 2;
constexpr int kIncomplete = 3;
// As a shell reports a program that Ctrl-C or a closed pipe ended.
constexpr int kInterrupted = 130;
constexpr int kNobodyReads = 141;

int Refuse(const std::string& reason) {
  std::fprintf(stderr, "tessimar-batch: %s\n", reason.c_str());
  return kUnusable;
}

/// The toolkit warns of what a session at a screen would have, such as a runtime directory. Nothing of that is needed
/// here.
void ReportErrors(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtCriticalMsg || type == QtFatalMsg) {
    std::fprintf(stderr, "%s\n", FromQString(message).c_str());
  }
}

/// Pictures must look the same on every machine, so nothing of the user's screen may reach the toolkit.
void ForgetScreen() {
  for (const char* variable : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI", "QT_USE_PHYSICAL_DPI",
                               "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME", "QT_AUTO_SCREEN_SCALE_FACTOR"}) {
    qunsetenv(variable);
  }
  qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
  qputenv("QT_QPA_PLATFORM", "offscreen");
}

/// A table that is written at the end, in a file that was found writable at the start.
class TTableFile {
 public:
  /// An empty path asks for no table.
  explicit TTableFile(const std::string& path) : path(path) {
    if (!path.empty()) {
      output.emplace(path);
    }
  }

  bool IsWanted() const { return output.has_value(); }
  bool CanBeWritten() const { return !output || output->IsOpen(); }
  bool Write(const std::string& table) { return !output || output->Write(table); }
  const std::string& GetPath() const { return path; }

 private:
  std::string path;
  std::optional<base::TNamedOutput> output;
};

struct TTableFiles {
  TTableFile variables;
  TTableFile segments;
};

/// Runs the lines, and those of the script if there is one, and writes what was asked for.
int RunLines(const TOptions& options, base::TLineReader* reader, TStreamView& view, TTableFiles& tables) {
  TCtrlMain controller(view, options.plugins);
  if (options.seed) {
    controller.SetSeed(*options.seed);
  }
  TPictureSaver saver(options.pictures);
  const TDialogRunnerScope scope(
      options.pictures.empty() ? TDialogRunner() : boost::bind(&TPictureSaver::Save, &saver, boost::placeholders::_1));
  for (std::size_t i = 0; i < options.lines.size() && !view.HasFailed() && !base::Interrupted(); ++i) {
    controller.ExecuteScriptLine(options.lines[i], "-e", i + 1);
  }
  if (reader != nullptr) {
    // Whoever types sees the answer to each line and needs no position.
    const std::string standardInput = reader->IsTerminal() ? "" : "-";
    controller.RunScript(*reader, options.script.empty() ? standardInput : options.script);
  }
  std::string failedFile = saver.GetFailedFile();
  if (tables.variables.IsWanted() && !tables.variables.Write(FormatVariables(controller.GetVarList()))) {
    failedFile = tables.variables.GetPath();
  }
  if (tables.segments.IsWanted() && !tables.segments.Write(FormatSegments(controller.GetVarList()))) {
    failedFile = tables.segments.GetPath();
  }
  if (!options.rankings.empty() && failedFile.empty()) {
    failedFile = WriteRankings(controller.GetVarList(), options.rankings);
  }
  if (!options.runs.empty() && failedFile.empty()) {
    failedFile = WriteRuns(controller.GetVarList(), options.runs);
  }
  if (!failedFile.empty()) {
    return Refuse(FormatString("File '%s' cannot be written", failedFile.c_str()));
  }
  if (base::Interrupted()) {
    return kInterrupted;
  }
  if (view.HasFailed()) {
    return kNobodyReads;
  }
  if (controller.GetFailedLines() > 0) {
    return kLineFailed;
  }
  return controller.HasLosses() ? kIncomplete : kSucceeded;
}

int CheckOnePlugin(const std::string& fileName) {
  if (!base::CanRunTrials()) {
    return Refuse("Plug-ins cannot be checked on this system");
  }
  if (!base::IsRegularFile(fileName)) {
    return Refuse(FormatString("Plug-in '%s' cannot be read", fileName.c_str()));
  }
  const bool isSound = CheckPlugin(base::NativePath(fileName), [](const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
  });
  return isSound ? kSucceeded : kLineFailed;
}

int Run(int argc, char** argv) {
  std::string reason;
  const auto options = ParseOptions(argc, argv, reason);
  if (!options) {
    return Refuse(reason + " See tessimar-batch --help.");
  }
  if (options->help || options->version) {
    std::fputs(options->help ? kUsage : "tessimar-batch " TESSIMAR_VERSION "\n", stdout);
    return kSucceeded;
  }
  if (!options->checkedPlugin.empty()) {
    return CheckOnePlugin(options->checkedPlugin);
  }
  for (const std::string& directory : options->plugins) {
    if (!base::ListDirectory(directory)) {
      return Refuse(FormatString("Directory '%s' cannot be read", directory.c_str()));
    }
  }
  std::unique_ptr<base::TLineReader> reader;
  if (!options->script.empty()) {
    reader = std::make_unique<base::TLineReader>(options->script);
    if (!reader->IsOpen()) {
      return Refuse(FormatString("Script '%s' cannot be read", options->script.c_str()));
    }
    if (!reader->BeginsAsText()) {
      return Refuse(FormatString("Script '%s' is not a text", options->script.c_str()));
    }
  } else if (!options->onlyLines) {
    reader = std::make_unique<base::TLineReader>();
  }
  // Whether the results can be written is better known before an hour of work than after it.
  for (const std::string& directory : {options->pictures, options->rankings, options->runs}) {
    if (!directory.empty() && !base::MakeWritableDirectory(directory)) {
      return Refuse(FormatString("Directory '%s' cannot be written", directory.c_str()));
    }
    if (!directory.empty()) {
      base::RemoveAbandonedFiles(directory);
    }
  }
  TTableFiles tables = {TTableFile(options->variables), TTableFile(options->segments)};
  for (const TTableFile* table : {&tables.variables, &tables.segments}) {
    if (!table->CanBeWritten()) {
      return Refuse(FormatString("File '%s' cannot be written", table->GetPath().c_str()));
    }
  }
  qInstallMessageHandler(ReportErrors);
  std::FILE* output = base::TakeStandardOutput(options->verbose);
  if (output == nullptr) {
    return Refuse("Standard output cannot be used");
  }
  base::CatchSignals();
  base::KeepFreedMemory();
  ForgetScreen();
  int argumentCount = 1;
  QApplication application(argumentCount, argv);
  base::UseClassicNumbers();
  TStreamView view(output);
  return RunLines(*options, reader.get(), view, tables);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& failure) {
    return Refuse(failure.what());
  }
}
