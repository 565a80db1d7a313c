#include "concepts/concept-command.h"

#include "concepts/var-visual-concept.h"

bool TConceptCommand::Locate(const TImageSelection& images, const TVarVisualConcept& visualConcept,
                             const std::string& tag, const boost::function<void(TVarImage&)>& visit,
                             const boost::function<void()>& atEnd) const {
  if (tag.empty()) {
    return Fail("Tag is empty");
  }
  // Held for this one command: the user may replace the classifier variable, and the concept must notice at the next
  // one.
  const auto classifier = visualConcept.LockClassifier();
  if (!classifier) {
    return Fail("Concept has no classifier");
  }
  int skipped = 0;
  const auto step = [&](TVarImage& image) {
    skipped += visualConcept.Locate(*classifier, tag, image);
    visit(image);
    return true;
  };
  return ForEachImage(images, step, [&] {
    PrintCount(skipped, "segments without usable features skipped");
    atEnd();
  });
}
