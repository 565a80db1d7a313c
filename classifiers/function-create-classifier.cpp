#include "classifiers/function-create-classifier.h"

#include "classifiers/classifier-types.h"
#include "classifiers/var-classifier.h"

TFunctionCreateClassifier::TFunctionCreateClassifier()
    : TFunction({.name = "createclassifier", .kinds = {"string"}, .returns = Returns<TVarClassifier>(), .help = R"(
Name:        CreateClassifier
Description: Creates 'classifier' variable of a given type
Syntax:      classifier = createclassifier("neural")
Returns:     'classifier'
Parameters:  1 - string)"}) {}

bool TFunctionCreateClassifier::ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) {
  const std::string type = StripQuotes(params[0]);
  if (FindClassifierType(type) == nullptr) {
    Print("Unknown classifier type");
    return false;
  }
  dynamic_cast<TVarClassifier&>(variable).SetClassifierType(type);
  return true;
}
