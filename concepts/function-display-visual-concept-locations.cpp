#include "concepts/commands.h"

#include "concepts/var-visual-concept-locations.h"
#include "engine/function.h"
#include "images/var-image.h"

namespace {

/// displayvisualconceptlocations: tests its parameters and ends there, since no command makes a variable of the second
/// one's type; displayimage shows where a concept was found.
class TFunctionDisplayVisualConceptLocations : public TFunction {
 public:
  TFunctionDisplayVisualConceptLocations()
      : TFunction({.name = "displayvisualconceptlocations", .kinds = {"variable", "variable"}, .help = R"(
Name:        DisplayVisualConceptLocations
Description: Displays 'visualconceptlocations' in an 'image'
Syntax:      displayvisualconceptlocations(image, locations)
Returns:     nothing
Parameters:  1 - 'image'
Parameters:  2 - 'visualconceptlocations')"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    return (FindVariable<TVarImage>(params[0]) != nullptr &&
            FindVariable<TVarVisualConceptLocations>(params[1]) != nullptr) ||
           Fail("Incorrect parameter types");
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeDisplayVisualConceptLocations() {
  return std::make_unique<TFunctionDisplayVisualConceptLocations>();
}
