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

/// Base of every command of the language. A command says in its constructor what it is called, what it returns, which
/// parameters it takes and what its help says, and overrides Execute or ExecuteWithReturn. The objects live as long as
/// the list of commands and are used for every call.
///
/// Parameters arrive as the parser left them, double quotes included. A command that fails prints its reason through
/// Print() and returns false.
class TFunction {
 public:
  virtual ~TFunction() = default;
  TFunction(const TFunction&) = delete;
  TFunction& operator=(const TFunction&) = delete;

  /// Prints the help lines.
  virtual void ShowHelp() const;

  /// A new empty variable of the return type; null for a command that returns nothing.
  virtual std::unique_ptr<TVar> CreateReturnVariable() const;

  /// Tests number and kinds of the parameters and prints one line for each fault found. A command that declared no
  /// parameters accepts any.
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
  TFunction() = default;

  /// Declares the parameters by their kinds. The last `optional` of them may be left out.
  void SetParameters(std::vector<std::string> newKinds, int optional = 0);

  void SetHelp(std::vector<std::string> lines);

  /// The variable of that name as a `TVariable`; null if there is none or it is of another class.
  template <typename TVariable>
  TVariable* FindVariable(const std::string& variableName) const {
    return dynamic_cast<TVariable*>(varList->Find(variableName));
  }

  /// Prints one line of output.
  void Print(const std::string& line) const;

  /// Reads a text file that the user named into lines. False if there is none; the reason has been printed, and so has
  /// what the reader loses of the file.
  bool LoadLines(const std::string& path, TCommandHistory& lines) const;

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
  bool returnsValue = false;
  std::string returnType;
  int minParameters = 0;
  int maxParameters = 0;
  boost::function<void(std::string)> output;
  /// Runs a command line like a typed one.
  boost::function<void(std::string)> command;

 private:
  bool checksParameters = false;
  std::vector<std::string> kinds;
  std::vector<std::string> help;
};
