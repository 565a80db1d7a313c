#include "concepts/concept-command.h"

#include "base/format-string.h"
#include "concepts/var-visual-concept.h"

bool TConceptCommand::Locate(const TImageSelection& images, const TVarVisualConcept& visualConcept,
                             const std::string& tag, const boost::function<void(TVarImage&)>& visit,
                             const boost::function<void()>& atEnd) const {
  if (tag.empty()) {
    Print("Tag is empty");
    return false;
  }
  // Held for this one command: the user may replace the classifier variable, and the concept must notice at the next
  // one.
  const auto classifier = visualConcept.LockClassifier();
  if (!classifier) {
    Print("Concept has no classifier");
    return false;
  }
  int skipped = 0;
  const auto step = [&](TVarImage& image) {
    skipped += visualConcept.Locate(*classifier, tag, image);
    visit(image);
    return true;
  };
  return ForEachImage(images, step, [&] {
    if (skipped > 0) {
      Print(FormatString("%d segments without usable features skipped", skipped));
    }
    atEnd();
  });
}
