#pragma once

#include <memory>
#include <string>

#include <boost/function/function_fwd.hpp>

#include "base/shared-text.h"

/// Base of everything that the user's work leaves in the variable store: a name, a type name, and a channel for lines
/// of output. A variable belongs to its store (TVarList), or to the variable that holds it, such as an image in a
/// database.
class TVar {
 public:
  virtual ~TVar();
  TVar(const TVar&) = delete;
  TVar& operator=(const TVar&) = delete;

  /// A new empty variable of the same class, without a name and in no store.
  virtual std::unique_ptr<TVar> CreateNew() const = 0;

  /// Takes over the contents of `source`, of which it then shares nothing. Name and type stay. A source of another
  /// class and a null one change nothing; the variable itself is a source like any other.
  virtual void Assign(const TVar* source) = 0;

  /// One line about the contents, for the Variables table.
  virtual std::string GetDescription() const = 0;

  const std::string& GetName() const { return name.Get(); }
  std::string GetType() const { return type; }
  void SetName(const std::string& newName) { name = newName; }

  /// Where Print() sends its lines; bound by the store that takes the variable.
  void SetOutput(const boost::function<void(std::string)>& newOutput);

 protected:
  /// The name of the type is a constant of the derived class.
  explicit TVar(const char* typeName);

  /// Prints one line, if the variable stands in a store.
  void Print(const std::string& line) const;

 private:
  base::TSharedText name;
  const char* const type;
  // Most variables are images of a database: these have no name and no output, and there may be a million of them.
  std::unique_ptr<boost::function<void(std::string)>> output;
};
