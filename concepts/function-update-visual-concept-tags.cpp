#include "concepts/commands.h"

#include <algorithm>

#include "base/format-string.h"
#include "concepts/concept-command.h"
#include "concepts/var-visual-concept.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// updatevisualconcepttags: labels the segments of a database as findvisualconceptlocations does, and tags every image
/// on which the concept was found.
class TFunctionUpdateVisualConceptTags : public TConceptCommand {
 public:
  TFunctionUpdateVisualConceptTags()
      : TConceptCommand({.name = "updatevisualconcepttags", .kinds = {"variable", "variable", "string"}, .help = R"(
Name:        UpdateVisualConceptTags
Description: Adds tags to 'database' if a 'concept' is found in the image
Syntax:      updatevisualconcepttags(db, concept, "tree")
Returns:     nothing
Parameters:  1 - 'database'
             2 - 'visualconcept'
             3 - tag)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = FindVariable<TVarDatabase>(params[0]);
    const auto* visualConcept = FindVariable<TVarVisualConcept>(params[1]);
    const std::string tag = StripQuotes(params[2]);
    if (database == nullptr) {
      return Fail("First variable is not of type 'database'");
    }
    if (visualConcept == nullptr) {
      return Fail("Second variable is not of type 'visualconcept'");
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
};

}  // namespace

std::unique_ptr<TFunction> MakeUpdateVisualConceptTags() {
  return std::make_unique<TFunctionUpdateVisualConceptTags>();
}
