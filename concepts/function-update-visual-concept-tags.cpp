#include "concepts/function-update-visual-concept-tags.h"

#include <algorithm>

#include "base/format-string.h"
#include "concepts/var-visual-concept.h"
#include "images/var-database.h"
#include "images/var-image.h"

TFunctionUpdateVisualConceptTags::TFunctionUpdateVisualConceptTags()
    : TConceptCommand({.name = "updatevisualconcepttags", .kinds = {"variable", "variable", "string"}, .help = R"(
Name:        UpdateVisualConceptTags
Description: Adds tags to 'database' if a 'concept' is found in the image
Syntax:      updatevisualconcepttags(db, concept, "tree")
Returns:     nothing
Parameters:  1 - 'database'
             2 - 'visualconcept'
             3 - tag)"}) {}

bool TFunctionUpdateVisualConceptTags::Execute(const std::vector<std::string>& params) {
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  const auto* visualConcept = FindVariable<TVarVisualConcept>(params[1]);
  const std::string tag = StripQuotes(params[2]);
  if (database == nullptr) {
    Print("First variable is not of type 'database'");
    return false;
  }
  if (visualConcept == nullptr) {
    Print("Second variable is not of type 'visualconcept'");
    return false;
  }
  int tagged = 0;
  const auto visit = [&](TVarImage& image) {
    // Every label is this concept's: locating it has taken all others away.
    const bool isFound = std::any_of(image.GetSegments().begin(), image.GetSegments().end(),
                                     [](const auto& segment) { return !segment->GetLabel().empty(); });
    if (isFound) {
      ++tagged;
      if (!image.HasTag(tag)) {
        image.GetTags().push_back(tag);
      }
    }
  };
  return Locate(TImageSelection(*database), *visualConcept, tag, visit,
                [&] { Print(FormatString("%d images tagged", tagged)); });
}
