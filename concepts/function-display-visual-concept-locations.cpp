#include "concepts/function-display-visual-concept-locations.h"

#include "concepts/var-visual-concept-locations.h"
#include "images/var-image.h"

TFunctionDisplayVisualConceptLocations::TFunctionDisplayVisualConceptLocations()
    : TFunction({.name = "displayvisualconceptlocations", .kinds = {"variable", "variable"}, .help = R"(
Name:        DisplayVisualConceptLocations
Description: Displays 'visualconceptlocations' in an 'image'
Syntax:      displayvisualconceptlocations(image, locations)
Returns:     nothing
Parameters:  1 - 'image'
Parameters:  2 - 'visualconceptlocations')"}) {}

bool TFunctionDisplayVisualConceptLocations::Execute(const std::vector<std::string>& params) {
  if (FindVariable<TVarImage>(params[0]) == nullptr || FindVariable<TVarVisualConceptLocations>(params[1]) == nullptr) {
    Print("Incorrect parameter types");
    return false;
  }
  return true;
}
