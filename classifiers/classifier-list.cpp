#include "classifiers/classifier-list.h"

#include "classifiers/classifier-neural-network.h"
#include "classifiers/classifier-types.h"

std::unique_ptr<TClassifier> TClassifierList::Create(const std::string& type) const {
  const TClassifierType* known = FindClassifierType(type);
  return known == nullptr ? nullptr : known->make();
}

void TClassifierList::PrepareTraining(TClassifier& classifier) const {
  auto* neural = dynamic_cast<TClassifierNeuralNetwork*>(&classifier);
  if (seed && neural != nullptr) {
    neural->SetSeed(*seed);
    neural->SetFixedSeed(true);
  }
}
