#include "classifiers/commands.h"

#include "base/format-string.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "engine/function.h"

namespace {

/// setclassifiersetting: changes one setting of a classifier, for its next training. The value is not looked at.
class TFunctionSetClassifierSetting : public TFunction {
 public:
  TFunctionSetClassifierSetting()
      : TFunction({.name = "setclassifiersetting", .kinds = {"variable", "string", "string"}, .help = R"(
Name:        SetClassifierSetting
Description: Changes a setting of a 'classifier'
Syntax:      setclassifiersetting(classifier, "kernel", "linear")
Returns:     nothing
Parameters:  1 - 'classifier'
             2 - string
             3 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* variable = FindVariable<TVarClassifier>(params[0]);
    const std::string setting = StripQuotes(params[1]);
    if (variable == nullptr) {
      return Fail("Parameter 1 is not of type 'classifier'");
    }
    return variable->GetClassifier()->SetSetting(setting, StripQuotes(params[2])) ||
           Fail(FormatString("Setting '%s' does not exist", setting.c_str()));
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeSetClassifierSetting() {
  return std::make_unique<TFunctionSetClassifierSetting>();
}
