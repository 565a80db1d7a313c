#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/shared-text.h"

/// A named array of doubles, the one numeric vector of the system: features, and the examples of classifiers. The name
/// is that of the feature which produced it.
class TFeatureVector {
 public:
  TFeatureVector() = default;
  TFeatureVector(const TFeatureVector&) = delete;
  TFeatureVector& operator=(const TFeatureVector&) = delete;

  /// Null until the first SetLength.
  double* GetData() { return data.get(); }
  const double* GetData() const { return data.get(); }
  std::uint32_t GetLength() const { return length; }
  const std::string& GetName() const { return name.Get(); }
  void SetName(const std::string& newName) { name = newName; }

  /// Keeps the numbers if the length is the current one; otherwise they are undefined.
  void SetLength(std::uint32_t newLength);

  /// Zeroes all numbers.
  void Clear();

  /// Takes over numbers and name.
  void Assign(const TFeatureVector& other);

 private:
  std::unique_ptr<double[]> data;
  std::uint32_t length = 0;
  base::TSharedText name;
};
