#include "classifiers/classifier-list.h"

#include "classifiers/classifier-types.h"

std::unique_ptr<TClassifier> TClassifierList::Create(const std::string& type) const {
  const TClassifierType* known = FindClassifierType(type);
  return known == nullptr ? nullptr : known->make();
}

void TClassifierList::PrepareTraining(TClassifier& classifier) const {
  if (seed) {
    classifier.SetSeed(*seed);
  }
}
