#include "engine/var.h"

#include <boost/function.hpp>

TVar::TVar(const char* typeName) : type(typeName) {}

TVar::~TVar() = default;

void TVar::SetOutput(const boost::function<void(std::string)>& newOutput) {
  // A pointer a variable instead of the 32 bytes of a function object: only those in a store have one.
  output = std::make_unique<boost::function<void(std::string)>>(newOutput);
}

void TVar::Print(const std::string& line) const {
  // A variable outside of a store has no output, and nobody to print to.
  if (output && *output) {
    (*output)(line);
  }
}
