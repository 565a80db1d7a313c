#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class TClassifier;

/// The classifiers that the program knows, and what holds for all that are trained in a run. The controller owns it and
/// hands it to every command. It holds no classifier: those belong to their variables.
class TClassifierList {
 public:
  /// A new classifier of that type; null for a text that is no type.
  std::unique_ptr<TClassifier> Create(const std::string& type) const;

  /// From now on PrepareTraining makes training repeatable.
  void SetSeed(std::uint32_t value) { seed = value; }

  /// Called for every classifier just before a command trains it: fixes the seed of a classifier that draws random
  /// numbers, if a seed was set. Seeding at that point covers every way in which a classifier comes about, a copied
  /// variable included.
  void PrepareTraining(TClassifier& classifier) const;

 private:
  std::optional<std::uint32_t> seed;
};
