#include "concepts/function-update-visual-concept-tags.h"

#include <algorithm>

#include "base/format-string.h"
#include "concepts/var-visual-concept.h"
#include "images/var-database.h"
#include "images/var-image.h"

TFunctionUpdateVisualConceptTags::TFunctionUpdateVisualConceptTags() {
  name = "updatevisualconcepttags";
  SetParameters({"variable", "variable", "string"});
  SetHelp({"Name:        UpdateVisualConceptTags",                                       //
           "Description: Adds tags to 'database' if a 'concept' is found in the image",  //
           "Syntax:      updatevisualconcepttags(db, concept, \"tree\")",                //
           "Returns:     nothing",                                                       //
           "Parameters:  1 - 'database'",                                                //
           "             2 - 'visualconcept'",                                           //
           "             3 - tag"});
}

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
  if (tag.empty()) {
    Print("Tag is empty");
    return false;
  }
  const auto classifier = visualConcept->LockClassifier();
  if (!classifier) {
    Print("Concept has no classifier");
    return false;
  }
  int skipped = 0;
  int tagged = 0;
  const auto& images = database->GetImages();
  std::size_t done = 0;
  for (; done < images.size() && ReportProgress(done, images.size()); ++done) {
    TVarImage& image = *images[done];
    skipped += visualConcept->Locate(*classifier, tag, image);
    const bool isFound = std::any_of(image.GetSegments().begin(), image.GetSegments().end(),
                                     [](const auto& segment) { return !segment->GetLabel().empty(); });
    if (isFound) {
      ++tagged;
      if (!image.HasTag(tag)) {
        image.GetTags().push_back(tag);
      }
    }
  }
  if (skipped > 0) {
    Print(FormatString("%d segments without usable features skipped", skipped));
  }
  Print(FormatString("%d images tagged", tagged));
  return done == images.size() || Interrupted(done, images.size());
}
