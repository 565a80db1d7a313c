#include "concepts/function-find-visual-concept-locations.h"

#include "concepts/var-visual-concept.h"

TFunctionFindVisualConceptLocations::TFunctionFindVisualConceptLocations()
    : TConceptCommand({.name = "findvisualconceptlocations", .kinds = {"variable", "variable", "string"}, .help = R"(
Name:        FindVisualConceptLocations
Description: Locates a 'visualconcept' in segments of an 'image'
Syntax:      findvisualconceptlocations(image, concept, "tree")
Returns:     nothing
Parameters:  1 - 'image'
             2 - 'visualconcept'
             3 - tag)"}) {}

bool TFunctionFindVisualConceptLocations::Execute(const std::vector<std::string>& params) {
  const auto images = RequireImages(params);
  const auto* visualConcept = images ? Require<TVarVisualConcept>(params, 2) : nullptr;
  return visualConcept != nullptr && Locate(*images, *visualConcept, StripQuotes(params[2]), [](TVarImage&) {});
}
