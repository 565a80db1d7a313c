#include "concepts/commands.h"

#include "concepts/concept-command.h"
#include "concepts/var-visual-concept.h"

namespace {

/// findvisualconceptlocations: labels the segments of an image, or of all images of a database, on which a concept is
/// found, and takes the labels from all others.
class TFunctionFindVisualConceptLocations : public TConceptCommand {
 public:
  TFunctionFindVisualConceptLocations()
      : TConceptCommand({.name = "findvisualconceptlocations", .kinds = {"variable", "variable", "string"}, .help = R"(
Name:        FindVisualConceptLocations
Description: Locates a 'visualconcept' in segments of an 'image'
Syntax:      findvisualconceptlocations(image, concept, "tree")
Returns:     nothing
Parameters:  1 - 'image'
             2 - 'visualconcept'
             3 - tag)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const auto* visualConcept = images ? Require<TVarVisualConcept>(params, 2) : nullptr;
    return visualConcept != nullptr && Locate(*images, *visualConcept, StripQuotes(params[2]));
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeFindVisualConceptLocations() {
  return std::make_unique<TFunctionFindVisualConceptLocations>();
}
