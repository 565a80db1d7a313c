#include "classifiers/var-classifier.h"

#include <utility>

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
  // Made before anything changes: without memory for it the variable keeps a classifier of its type. A new one has no
  // examples, so that both together take no more than the old one.
  auto made = known == nullptr ? nullptr : known->make();
  classifierType = known == nullptr ? "" : known->name;
  classifier = std::move(made);
}
