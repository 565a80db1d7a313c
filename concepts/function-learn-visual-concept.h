#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

class TClassifier;
class TVarDatabase;
class TVarVisualConcept;

/// learnvisualconcept: teaches a classifier with every segment of two databases, those of the first as positive
/// examples and those of the second as negative ones, and leaves a concept that refers to it.
class TFunctionLearnVisualConcept : public TFunction {
 public:
  TFunctionLearnVisualConcept();
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;

 private:
  /// Tests that both databases hold images that are segmented; prints a line if not.
  bool CheckSegmented(const TVarDatabase& positive, const TVarDatabase& negative) const;
  /// Tests that the concept's examples would fit the classifier and that there are some; prints a line if not.
  bool CheckExamples(const TVarVisualConcept& visualConcept, const TClassifier& classifier,
                     const TVarDatabase& positive, const TVarDatabase& negative) const;
  /// Adds all examples and trains. False if the user ended it before all were added.
  bool Train(const TVarVisualConcept& visualConcept, TClassifier& classifier, const TVarDatabase& positive,
             const TVarDatabase& negative) const;
};
