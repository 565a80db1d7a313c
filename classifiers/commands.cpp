#include "base/format-string.h"
#include "classifiers/classifier-types.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "engine/command-factories.h"

namespace {

/// createclassifier: a classifier variable with a new classifier of the given type.
class TFunctionCreateClassifier : public TFunction {
 public:
  TFunctionCreateClassifier()
      : TFunction({.name = "createclassifier", .kinds = {"string"}, .returns = Returns<TVarClassifier>(), .help = R"(
Name:        CreateClassifier
Description: Creates 'classifier' variable of a given type
Syntax:      classifier = createclassifier("neural")
Returns:     'classifier'
Parameters:  1 - string)"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    const std::string type = StripQuotes(params[0]);
    if (FindClassifierType(type) == nullptr) {
      return Fail("Unknown classifier type");
    }
    dynamic_cast<TVarClassifier&>(variable).SetClassifierType(type);
    return true;
  }
};

/// getclassifiersetting: prints one setting of a classifier, or all of them. A setting that does not exist prints as
/// empty.
class TFunctionGetClassifierSetting : public TFunction {
 public:
  TFunctionGetClassifierSetting()
      : TFunction({.name = "getclassifiersetting", .kinds = {"variable", "string"}, .optional = 1, .help = R"(
Name:        GetClassifierSetting
Description: Shows the settings of a 'classifier'
Syntax:      getclassifiersetting(classifier, "kernel")
Returns:     nothing
Parameters:  1 - 'classifier'
             2 - string (optional))"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* variable = FindVariable<TVarClassifier>(params[0]);
    const std::string setting = params.size() > 1 ? StripQuotes(params[1]) : std::string();
    if (variable == nullptr) {
      return Fail("Parameter 1 is not of type 'classifier'");
    }
    const TClassifier& classifier = *variable->GetClassifier();
    const auto print = [&](const std::string& key) {
      Print(FormatString("%s = %s", key.c_str(), classifier.GetSetting(key).c_str()));
    };
    if (!setting.empty()) {
      print(setting);
      return true;
    }
    // The wording and the blank at the end are part of the transcripts.
    Print(FormatString("%d setting available: ", static_cast<int>(classifier.GetSettingCount())));
    for (std::uint32_t i = 0; i < classifier.GetSettingCount(); ++i) {
      print(classifier.GetSettingName(i));
    }
    return true;
  }
};

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
    // Any text is taken. Numbers are read out of it when the classifier trains, and a text without one counts as 0.
    return variable->GetClassifier()->SetSetting(setting, StripQuotes(params[2])) ||
           Fail(FormatString("Setting '%s' does not exist", setting.c_str()));
  }
};

}  // namespace

const TFunctionFactory kMakeCreateClassifier = MakeFunction<TFunctionCreateClassifier>;
const TFunctionFactory kMakeGetClassifierSetting = MakeFunction<TFunctionGetClassifierSetting>;
const TFunctionFactory kMakeSetClassifierSetting = MakeFunction<TFunctionSetClassifierSetting>;
