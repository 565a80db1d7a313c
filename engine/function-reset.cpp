#include "engine/function-reset.h"

#include "engine/var.h"

TFunctionReset::TFunctionReset()
    : TFunction({.name = "reset", .takesAnything = true, .help = R"(
Name:        Reset
Description: Resets the program to its startup state
Syntax:      reset()
Returns:     nothing)"}) {}

bool TFunctionReset::Execute(const std::vector<std::string>& /*params*/) {
  while (!varList->GetVariables().empty()) {
    varList->Remove(varList->GetVariables().front()->GetName());
  }
  return true;
}
