#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>

class MainWindow;
class TClassifierList;
class TCommandHistory;
class TCommandParser;
class TFeatureList;
class TFunctionList;
class TVar;
class TVarList;
struct TParsedCommand;

/// The program's centre: owns every engine object and is the road of every command line, whether typed, dropped or read
/// from a script. The window reaches it through three callbacks; it drives the window by plain calls.
class TCtrlMain {
 public:
  /// Sees every text that goes to the output pane, as the engine's own bytes.
  using TOutputObserver = boost::function<void(const std::string&)>;

  /// Builds the engine around a window that outlives it, reads the command history of the working directory and makes
  /// the directory "FeatureStorage" there. Feature plug-ins come from there and from `pluginDirectories`.
  explicit TCtrlMain(MainWindow* window, const TOutputObserver& observer = TOutputObserver(),
                     const std::vector<std::string>& pluginDirectories = {});
  /// Writes the command history.
  ~TCtrlMain();
  TCtrlMain(const TCtrlMain&) = delete;
  TCtrlMain& operator=(const TCtrlMain&) = delete;

  /// Appends one line to the output pane, indented by two blanks.
  void PrintLine(const std::string& line);

  /// Runs one command line from start to end. A script command calls it again for each of its lines.
  void ExecuteCommand(const std::string& line);

  /// Runs the text of the command line. While a command is under way the line waits until that command has ended.
  void OnCommandEntered();

  /// Moves the command line to an older or a newer entry of the history.
  void PreviousCommand();
  void NextCommand();

  /// Rebuilds the Variables table.
  void UpdateVariables();

  /// Makes everything that is drawn by lot come out the same in every run: the weights that a network starts from, and
  /// the directions of the map.
  void SetSeed(std::uint32_t seed);

  const TVarList& GetVarList() const { return *varList; }

  /// The number of command lines that failed so far, those of scripts included.
  int GetFailedLines() const { return failedLines; }

 private:
  enum class THelpRequest { kNone, kAnswered, kUnknownName };

  void AddOutput(const std::string& text);
  void AddToHistory(const std::string& line);

  /// Answers "help" and "help name". Does not fold case, unlike the parser.
  THelpRequest ProcessHelp(const std::string& line);

  /// True if the line succeeded.
  bool RunLine(const std::string& line);
  bool RunParsed(const TParsedCommand& parsed);
  bool RunFunction(const TParsedCommand& parsed);
  bool RunAssignFunction(const TParsedCommand& parsed);
  bool RunAssign(const TParsedCommand& parsed);

  /// Names the variable, adds it to the store and returns it.
  TVar* AddVariable(std::unique_ptr<TVar> variable, const std::string& name);

  MainWindow* window;
  TOutputObserver observer;
  std::unique_ptr<TCommandParser> parser;
  std::unique_ptr<TCommandHistory> history;
  /// The entry that the up and down keys have reached; -1 for none.
  int historyIndex = -1;
  std::unique_ptr<TVarList> varList;
  std::unique_ptr<TFunctionList> functionList;
  std::unique_ptr<TFeatureList> featureList;
  std::unique_ptr<TClassifierList> classifierList;
  int failedLines = 0;
  /// Set while OnCommandEntered runs a line; what is dropped meanwhile waits in pendingLines.
  bool isRunning = false;
  std::deque<std::string> pendingLines;
};
