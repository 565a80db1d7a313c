#include "concepts/function-find-visual-concept-locations.h"

#include "base/format-string.h"
#include "concepts/var-visual-concept.h"
#include "images/var-database.h"
#include "images/var-image.h"

TFunctionFindVisualConceptLocations::TFunctionFindVisualConceptLocations() {
  name = "findvisualconceptlocations";
  SetParameters({"variable", "variable", "string"});
  SetHelp({"Name:        FindVisualConceptLocations",                            //
           "Description: Locates a 'visualconcept' in segments of an 'image'",   //
           "Syntax:      findvisualconceptlocations(image, concept, \"tree\")",  //
           "Returns:     nothing",                                               //
           "Parameters:  1 - 'image'",                                           //
           "             2 - 'visualconcept'",                                   //
           "             3 - tag"});
}

bool TFunctionFindVisualConceptLocations::Execute(const std::vector<std::string>& params) {
  auto* image = FindVariable<TVarImage>(params[0]);
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  const auto* visualConcept = FindVariable<TVarVisualConcept>(params[1]);
  const std::string tag = StripQuotes(params[2]);
  if (image == nullptr && database == nullptr) {
    Print("First parameter is not of type 'image' or 'database'");
    return false;
  }
  if (visualConcept == nullptr) {
    Print("Second parameter is not of type 'visualconcept'");
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
  std::size_t done = 0;
  std::size_t total = 0;
  if (image != nullptr) {
    skipped = visualConcept->Locate(*classifier, tag, *image);
  } else {
    const auto& images = database->GetImages();
    total = images.size();
    for (; done < total && ReportProgress(done, total); ++done) {
      skipped += visualConcept->Locate(*classifier, tag, *images[done]);
    }
  }
  if (skipped > 0) {
    Print(FormatString("%d segments without usable features skipped", skipped));
  }
  return done == total || Interrupted(done, total);
}
