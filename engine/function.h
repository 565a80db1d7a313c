#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>

#include "engine/var-list.h"

class TClassifierList;
class TCommandHistory;
class TFeatureList;
class TVar;
class TWork;

/// The variable that a command fills: its type name, and how a new one is made. Empty for a command that fills none.
struct TReturn {
  std::string type = {};
  std::unique_ptr<TVar> (*create)() = nullptr;
};

template <typename TVariable>
TReturn Returns() {
  return {TVariable::kTypeName, []() -> std::unique_ptr<TVar> { return std::make_unique<TVariable>(); }};
}

/// What the language knows of a command.
struct TCommandFacts {
  std::string name = {};
  /// The kinds of the parameters: "variable", "string" or "boolean".
  std::vector<std::string> kinds = {};
  /// How many of them, the last, may be left out.
  int optional = 0;
  /// True for a command that accepts any parameters.
  bool takesAnything = false;
  TReturn returns = {};
  /// The lines of the help text, each behind a line feed.
  const char* help = "";
};

/// Base of every command of the language. A command gives its facts to the base and overrides Execute or
/// ExecuteWithReturn. The objects live as long as the list of commands and are used for every call.
///
/// Parameters arrive as the parser left them, double quotes included. A command that fails prints its reason and
/// returns false.
class TFunction {
 public:
  virtual ~TFunction() = default;
  TFunction(const TFunction&) = delete;
  TFunction& operator=(const TFunction&) = delete;

  /// Prints the help lines.
  virtual void ShowHelp() const;

  /// A new empty variable of the return type; null for a command that returns nothing.
  virtual std::unique_ptr<TVar> CreateReturnVariable() const;

  /// Tests number and kinds of the parameters and prints one line for each fault found.
  virtual bool CheckParameters(const std::vector<std::string>& params) const;

  /// Runs a command that returns nothing.
  virtual bool Execute(const std::vector<std::string>& params);

  /// Runs a command that fills `variable`, which stands in the store under the destination name: a new variable of the
  /// return type, or an earlier one whose contents are to be overwritten.
  virtual bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params);

  const std::string& GetName() const { return name; }
  bool ReturnsValue() const { return returnsValue; }
  const std::string& GetReturnType() const { return returnType; }

  /// The stores are shared, not owned, and outlive every call.
  void SetVarList(TVarList* list) { varList = list; }
  void SetFeatureList(const TFeatureList* list) { featureList = list; }
  void SetClassifierList(const TClassifierList* list) { classifierList = list; }

  /// Whom the command tells how far it is; without one nobody watches and nobody interrupts.
  void SetWork(TWork* newWork) { work = newWork; }

  void SetOutput(const boost::function<void(std::string)>& newOutput) { output = newOutput; }
  void SetCommand(const boost::function<void(std::string)>& newCommand) { command = newCommand; }

  /// Tests the number of parameters, and prints a line if it is wrong.
  bool CheckParameterCount(int count) const;

  /// Tests the parameter at `position` (from 1) against a kind of the language: "variable", "string" or "boolean".
  /// Prints a line if it does not fit.
  bool CheckParameterType(int position, const std::string& parameter, const std::string& kind) const;

  /// The parameter without its first and last character.
  static std::string StripQuotes(const std::string& parameter);

 protected:
  explicit TFunction(const TCommandFacts& facts);

  /// The variable of that name as a `TVariable`; null if there is none or it is of another class.
  template <typename TVariable>
  TVariable* FindVariable(const std::string& variableName) const {
    return dynamic_cast<TVariable*>(varList->Find(variableName));
  }

  /// The parameter at `position` (from 1 to 3) as a `TVariable`. Null if it is none, and the line that says so has been
  /// printed: "First parameter is not of type 'database'".
  template <typename TVariable>
  TVariable* Require(const std::vector<std::string>& params, int position) const {
    auto* variable = FindVariable<TVariable>(params[static_cast<std::size_t>(position) - 1]);
    if (variable == nullptr) {
      PrintWrongType(position, std::string("'") + TVariable::kTypeName + "'");
    }
    return variable;
  }

  /// Says that the parameter at `position` is not of the type, which stands in quotes.
  void PrintWrongType(int position, const std::string& quotedType) const;

  /// Prints one line of output.
  void Print(const std::string& line) const;

  /// Prints the reason why the command fails. Always false, the result of such a command.
  bool Fail(const std::string& reason) const;

  /// Prints the count and, behind a blank, what was counted; nothing if that is 0.
  void PrintCount(int count, const char* what) const;

  /// Prints a line that tells of a file without which the command goes on, and notes that something is missing in what
  /// it makes.
  void PrintLoss(const std::string& line) const;

  /// Reads a text file that the user named into lines. False if there is none; the reason has been printed, and so has
  /// what the reader loses of the file.
  bool LoadLines(const std::string& path, TCommandHistory& lines) const;

  /// Calls `step` with the number of each of `total` images, from 0, until it returns false or the user wants the
  /// command to end, and `atEnd` behind the last call. True if all images are done. Prints a line if the user ended it;
  /// a step that returns false has printed its own.
  bool ForEach(std::size_t total, const boost::function<bool(std::size_t)>& step,
               const boost::function<void()>& atEnd) const;

  /// To be called before each of `total` images, when `done` are through: lets the window draw itself and count on.
  /// False if the user wants the command to end; the command then returns Interrupted().
  bool ReportProgress(std::size_t done, std::size_t total) const;

  /// Says behind how many images the command ended. Always false, the result of a command that failed.
  bool Interrupted(std::size_t done, std::size_t total) const;

  /// Lets the window draw itself now.
  void ProcessEvents() const;

  /// Waits, where there is somebody to watch.
  void Pause(int milliseconds) const;

  TVarList* varList = nullptr;
  const TFeatureList* featureList = nullptr;
  const TClassifierList* classifierList = nullptr;
  TWork* work = nullptr;
  std::string name;
  bool returnsValue;
  std::string returnType;
  int minParameters;
  int maxParameters;
  boost::function<void(std::string)> output;
  /// Runs a command line like a typed one.
  boost::function<void(std::string)> command;

 private:
  std::vector<std::string> kinds;
  bool takesAnything;
  std::unique_ptr<TVar> (*createReturn)();
  const char* help;
};
