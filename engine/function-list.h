#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>

class TClassifierList;
class TFeatureList;
class TFunction;
class TVarList;
class TWork;

/// All commands of the language, made once in a fixed order, which is also the order of the help list. A new command is
/// a class, a factory in its wing's commands.h and one line in the table of factories.
class TFunctionList {
 public:
  TFunctionList();
  ~TFunctionList();
  TFunctionList(const TFunctionList&) = delete;
  TFunctionList& operator=(const TFunctionList&) = delete;

  /// The command of exactly this name, or null.
  TFunction* Find(const std::string& name) const;

  const std::vector<std::unique_ptr<TFunction>>& GetFunctions() const { return functions; }

  /// Hand a store to every command.
  void SetVarList(TVarList* list);
  void SetFeatureList(const TFeatureList* list);
  void SetClassifierList(const TClassifierList* list);
  void SetWork(TWork* work);

  /// Where the commands' lines of output go, and where the command lines go that they want run.
  void SetOutput(const boost::function<void(std::string)>& newOutput) { output = newOutput; }
  void SetCommand(const boost::function<void(std::string)>& newCommand) { command = newCommand; }

  void Print(const std::string& line) const;
  void ExecuteCommand(const std::string& line) const;

 private:
  std::vector<std::unique_ptr<TFunction>> functions;
  boost::function<void(std::string)> output;
  boost::function<void(std::string)> command;
};
