#pragma once

#include <memory>
#include <span>
#include <string>

#include "classifiers/classifier.h"

/// One kind of classifier. Whoever asks for a classifier by its type text, or describes one, reads it here.
struct TClassifierType {
  /// As in createclassifier("svm").
  const char* name;
  /// What the Variables table says of it.
  const char* label;
  /// The setting whose value ends the description; null for none.
  const char* describedSetting;
  std::unique_ptr<TClassifier> (*make)();
};

/// All types, in the order of the Classifiers table.
std::span<const TClassifierType> ClassifierTypes();

/// The type of exactly that name; null for any other text.
const TClassifierType* FindClassifierType(const std::string& name);
