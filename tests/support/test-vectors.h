#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "images/feature-vector.h"

/// A feature vector of these numbers.
inline std::unique_ptr<TFeatureVector> MakeVector(const std::string& name, const std::vector<double>& numbers) {
  auto vector = std::make_unique<TFeatureVector>();
  vector->SetName(name);
  vector->SetLength(static_cast<std::uint32_t>(numbers.size()));
  std::copy(numbers.begin(), numbers.end(), vector->GetData());
  return vector;
}
