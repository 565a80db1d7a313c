#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>

#include "engine/view.h"
#include "engine/work.h"

class TClassifierList;
class TCommandHistory;
class TCommandParser;
class TFeatureList;
class TFunction;
class TFunctionList;
class TVar;
class TVarList;
struct TParsedCommand;

namespace base {
class TLineReader;
}

/// The program's center: owns every engine object and is the road of every command line, whether typed, dropped or read
/// from a script. It drives the view by plain calls and hears of the user as the view's listener.
class TCtrlMain : private TViewListener, private TWork {
 public:
  /// Builds the engine around a view that outlives it, reads the command history of the working directory and makes
  /// the directory "FeatureStorage" there. Feature plug-ins come from there and from `pluginDirectories`.
  explicit TCtrlMain(TView& view, const std::vector<std::string>& pluginDirectories = {});
  /// Writes the command history.
  ~TCtrlMain() override;
  TCtrlMain(const TCtrlMain&) = delete;
  TCtrlMain& operator=(const TCtrlMain&) = delete;

  /// Prints one line, indented by two blanks.
  void PrintLine(const std::string& line);

  /// Runs one command line from start to end. A script command calls it again for each of its lines.
  void ExecuteCommand(const std::string& line);

  /// The same for a line of that number, from 1, of a script that the program was started with.
  void ExecuteScriptLine(const std::string& line, const std::string& script, std::size_t number);

  /// Runs the lines of a script that the program was started with, as they arrive, until they end, the user ends them,
  /// or the view is closed. A first line that begins with "#!" is meant for the system and passed over. What the user
  /// types meanwhile comes behind them. Lines of a script without a name are not reported when they fail.
  void RunScript(base::TLineReader& reader, const std::string& script);

  /// Has the view show the variables as they are now.
  void UpdateVariables();

  /// Makes everything that is drawn at random the same in every run: the weights that a network starts from, and
  /// the directions of the map.
  void SetSeed(std::uint32_t seed);

  const TVarList& GetVarList() const { return *varList; }

  /// The number of command lines that failed so far, those of scripts included.
  int GetFailedLines() const { return failedLines; }

  /// True if a command that succeeded had to do without a file that it could not read, or not whole.
  bool HasLosses() const { return hasLosses; }

 private:
  enum class THelpRequest { kNone, kAnswered, kUnknownName };
  enum class TOrigin { kTyped, kDropped };

  /// Where a command line stands; one that was typed has no script.
  struct TPosition {
    std::string script;
    std::size_t line = 0;
  };

  struct TPendingLine {
    std::string text;
    TOrigin origin;
  };

  /// The text of the command line runs. While a command is under way it waits until that command has ended.
  void OnCommandEntered() override { RunFromView(TOrigin::kTyped); }
  void OnFileDropped() override { RunFromView(TOrigin::kDropped); }
  void PreviousCommand() override;
  void NextCommand() override;
  void Interrupt() override;
  TCompletion Complete(const std::string& before) const override;

  bool Continue(const std::string& command, std::size_t done, std::size_t total) override;
  void ProcessEvents() override;
  void Pause(int milliseconds) override;
  void SetPosition(const std::string& script, std::size_t line) override { nextPosition = {script, line}; }
  void NoteLoss() override { hasLosses = true; }
  bool IsInterrupted() const override { return isInterrupted; }

  void RunFromView(TOrigin origin);
  void Execute(const std::string& line, TOrigin origin);
  void ExecuteAsWork(const std::string& line, TOrigin origin);
  /// Calls `run` as one piece of work, and then runs the lines that arrived meanwhile.
  void RunAsWork(const boost::function<void()>& run);
  void AddToHistory(const std::string& line);

  /// Answers "help" and "help name". Does not fold case, unlike the parser.
  THelpRequest ProcessHelp(const std::string& line);

  /// True if the line succeeded. Nothing thrown leaves it.
  bool RunLine(const std::string& line, TOrigin origin);
  bool RunParsed(const TParsedCommand& parsed, TOrigin origin);
  bool RunFunction(const TParsedCommand& parsed);
  bool RunAssignFunction(const TParsedCommand& parsed, TOrigin origin);
  bool RunAssign(const TParsedCommand& parsed);

  /// Calls what belongs to no command. If it throws, that is printed and counts as a line that failed: nothing goes on
  /// to the toolkit, which could not bear it.
  template <typename TRun>
  void RunOutside(const TRun& run);

  /// Prints why something ended that had thrown.
  void PrintFailure(const char* reason) noexcept;

  /// Says that a command failed. Always false.
  bool PrintFunctionFailed();
  void ReportFailedLine();

  /// Runs a command into its destination, which it makes where there is none of the type.
  bool FillDestination(TFunction& function, const TParsedCommand& parsed);

  /// Names the variable, adds it to the store and returns it.
  TVar* AddVariable(std::unique_ptr<TVar> variable, const std::string& name);

  TView& view;
  std::unique_ptr<TCommandParser> parser;
  std::unique_ptr<TCommandHistory> history;
  /// The entry that the up and down keys have reached; -1 for none.
  int historyIndex = -1;
  std::unique_ptr<TVarList> varList;
  std::unique_ptr<TFunctionList> functionList;
  std::unique_ptr<TFeatureList> featureList;
  std::unique_ptr<TClassifierList> classifierList;
  int failedLines = 0;
  bool hasLosses = false;
  /// The lines under way, one inside the other, the outermost first.
  std::vector<TPosition> underWay;
  TPosition nextPosition;
  /// What was printed last since a line began, and why a line failed.
  std::string lastPrinted;
  std::string failure;
  bool isInterrupted = false;
  /// Set while RunAsWork runs lines; what arrives meanwhile waits in pendingLines.
  bool isRunning = false;
  std::deque<TPendingLine> pendingLines;
  bool showsWork = false;
  /// When the view last drew the work under way.
  std::chrono::steady_clock::time_point lastDrawn;
};
