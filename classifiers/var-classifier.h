#pragma once

#include <memory>
#include <string>

#include "engine/var.h"

class TClassifier;

/// A variable of type "classifier": a classifier and its type. The variable alone decides how long the classifier
/// lives: another SetClassifierType, and the end of the variable, end it. Who only refers to it keeps what
/// WatchClassifier returns, which knows when it is gone, and locks it for the length of one operation at most.
class TVarClassifier : public TVar {
 public:
  static constexpr const char* kTypeName = "classifier";

  TVarClassifier();
  ~TVarClassifier() override;

  std::unique_ptr<TVar> CreateNew() const override;

  /// Takes over the type only: a new classifier with default settings, no examples and no training. So does the
  /// variable from itself.
  void Assign(const TVar* source) override;

  std::string GetDescription() const override;

  /// The type text; empty without a classifier.
  const std::string& GetClassifierType() const { return classifierType; }

  /// Replaces the classifier by a new one. A text that is no type leaves the variable without one.
  void SetClassifierType(const std::string& newType);

  /// Null until SetClassifierType has made one.
  TClassifier* GetClassifier() const { return classifier.get(); }

  std::weak_ptr<TClassifier> WatchClassifier() const { return classifier; }

 private:
  std::string classifierType;
  std::shared_ptr<TClassifier> classifier;
};
