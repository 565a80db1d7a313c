#include "engine/function-reset.h"

#include "engine/var.h"

TFunctionReset::TFunctionReset() {
  name = "reset";
  SetHelp({"Name:        Reset",                                    //
           "Description: Resets the program to its startup state",  //
           "Syntax:      reset()",                                  //
           "Returns:     nothing"});
}

bool TFunctionReset::Execute(const std::vector<std::string>& /*params*/) {
  while (!varList->GetVariables().empty()) {
    varList->Remove(varList->GetVariables().front()->GetName());
  }
  return true;
}
