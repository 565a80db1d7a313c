#include "engine/function-reset.h"

#include "engine/var.h"

TFunctionReset::TFunctionReset()
    : TFunction({.name = "reset", .takesAnything = true, .help = R"(
Name:        Reset
Description: Resets the program to its startup state
Syntax:      reset()
Returns:     nothing)"}) {}

bool TFunctionReset::Execute(const std::vector<std::string>& /*params*/) {
  // By name, one after the other, as a user would remove them. History, plug-ins and files stay.
  while (!varList->GetVariables().empty()) {
    varList->Remove(varList->GetVariables().front()->GetName());
  }
  return true;
}
