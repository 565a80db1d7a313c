#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <boost/function.hpp>

class TVar;

/// The one store of variables, in order of addition. It owns them: a pointer found here is valid only until that name
/// is removed. A name occurs once because whoever adds a variable looks for it first; the store itself does not check.
class TVarList {
 public:
  TVarList();
  ~TVarList();
  TVarList(const TVarList&) = delete;
  TVarList& operator=(const TVarList&) = delete;

  /// The first variable of exactly this name, or null.
  TVar* Find(const std::string& name) const;

  /// Takes the variable, which keeps its name from now on, binds its output to the store's and appends it.
  void Add(std::unique_ptr<TVar> variable);

  /// Destroys the first variable of that name; the others keep their order. An absent name is no error.
  void Remove(const std::string& name);

  const std::vector<std::unique_ptr<TVar>>& GetVariables() const { return variables; }

  /// Forwards a line to the output, if one is bound.
  void Print(const std::string& line) const;

  void SetOutput(const boost::function<void(std::string)>& newOutput) { output = newOutput; }

 private:
  std::vector<std::unique_ptr<TVar>> variables;
  struct TNamed {
    TVar* first;
    std::size_t count;
  };
  /// By name: a script may make thousands of variables, and every line looks some up.
  std::unordered_map<std::string, TNamed> byName;
  boost::function<void(std::string)> output;
};
