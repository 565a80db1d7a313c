#include "classifiers/commands.h"

#include "base/format-string.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "engine/function.h"

namespace {

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

}  // namespace

std::unique_ptr<TFunction> MakeGetClassifierSetting() {
  return std::make_unique<TFunctionGetClassifierSetting>();
}
