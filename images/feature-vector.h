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

  /// True for a vector that was computed from no picture, because the file could not be read: no number of it tells
  /// anything.
  bool GetLacksPicture() const { return lacksPicture; }
  void SetLacksPicture(bool flag) { lacksPicture = flag; }

  /// Zeroes all numbers.
  void Clear();

  /// Takes over numbers, name and whether there was a picture.
  void Assign(const TFeatureVector& other);

 private:
  std::unique_ptr<double[]> data;
  std::uint32_t length = 0;
  bool lacksPicture = false;
  base::TSharedText name;
};
