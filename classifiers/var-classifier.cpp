#include "classifiers/var-classifier.h"

#include "classifiers/classifier-types.h"
#include "classifiers/classifier.h"

TVarClassifier::TVarClassifier() : TVar(kTypeName) {}

TVarClassifier::~TVarClassifier() = default;

std::unique_ptr<TVar> TVarClassifier::CreateNew() const {
  return std::make_unique<TVarClassifier>();
}

void TVarClassifier::Assign(const TVar* source) {
  const auto* other = dynamic_cast<const TVarClassifier*>(source);
  if (other != nullptr) {
    // The type and not the training: two variables that shared one would change each other.
    SetClassifierType(other->classifierType);
  }
}

std::string TVarClassifier::GetDescription() const {
  const TClassifierType* known = FindClassifierType(classifierType);
  if (known == nullptr) {
    return "";
  }
  std::string description = known->label;
  if (known->describedSetting != nullptr) {
    description += classifier->GetSetting(known->describedSetting);
  }
  return description;
}

void TVarClassifier::SetClassifierType(const std::string& newType) {
  const TClassifierType* known = FindClassifierType(newType);
  // The old one goes first: its examples may take much of the memory.
  classifier.reset();
  classifier = known == nullptr ? nullptr : known->make();
  classifierType = known == nullptr ? "" : known->name;
}
