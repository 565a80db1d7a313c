#include "engine/commands.h"

#include "engine/function.h"
#include "engine/var.h"

namespace {

/// reset: empties the variable store. Accepts any parameters and ignores them.
class TFunctionReset : public TFunction {
 public:
  TFunctionReset()
      : TFunction({.name = "reset", .takesAnything = true, .help = R"(
Name:        Reset
Description: Resets the program to its startup state
Syntax:      reset()
Returns:     nothing)"}) {}

  bool Execute(const std::vector<std::string>& /*params*/) override {
    // By name, one after the other, as a user would remove them. History, plug-ins and files stay.
    while (!varList->GetVariables().empty()) {
      varList->Remove(varList->GetVariables().front()->GetName());
    }
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeReset() {
  return std::make_unique<TFunctionReset>();
}
