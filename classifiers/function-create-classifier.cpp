#include "classifiers/function-create-classifier.h"

#include "classifiers/classifier-types.h"
#include "classifiers/var-classifier.h"

TFunctionCreateClassifier::TFunctionCreateClassifier() {
  name = "createclassifier";
  returnsValue = true;
  returnType = "classifier";
  SetParameters({"string"});
  SetHelp({"Name:        CreateClassifier",                               //
           "Description: Creates 'classifier' variable of a given type",  //
           "Syntax:      classifier = createclassifier(\"neural\")",      //
           "Returns:     'classifier'",                                   //
           "Parameters:  1 - string"});
}

std::unique_ptr<TVar> TFunctionCreateClassifier::CreateReturnVariable() const {
  return std::make_unique<TVarClassifier>();
}

bool TFunctionCreateClassifier::ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) {
  const std::string type = StripQuotes(params[0]);
  if (FindClassifierType(type) == nullptr) {
    Print("Unknown classifier type");
    return false;
  }
  dynamic_cast<TVarClassifier&>(variable).SetClassifierType(type);
  return true;
}
