#include "classifiers/commands.h"

#include "classifiers/classifier-types.h"
#include "classifiers/var-classifier.h"
#include "engine/function.h"

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

}  // namespace

std::unique_ptr<TFunction> MakeCreateClassifier() {
  return std::make_unique<TFunctionCreateClassifier>();
}
