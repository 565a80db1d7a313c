#pragma once

#include <cstdint>
#include <optional>
#include <string>

class TFeatureVector;
class TImageGray;
class TImageRGB;

/// Base of all features: a named computation that turns pixels into a vector of doubles. A feature keeps no results; it
/// writes into the vector that the caller gives it, and sets its name, its length and every element.
class TFeature {
 public:
  virtual ~TFeature() = default;
  TFeature(const TFeature&) = delete;
  TFeature& operator=(const TFeature&) = delete;

  /// Computes the feature of a color picture or a gray one. False if the feature cannot say how long its vector is;
  /// the vector is then as it was. A feature that does not work on that kind of picture gives a vector of length 0.
  virtual bool ProcessColor(const TImageRGB& image, TFeatureVector& vector) const;
  virtual bool ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const;

  /// How many numbers a vector of this feature has; nothing if the feature cannot say.
  virtual std::optional<std::uint32_t> GetLength() const { return length; }

  /// The key by which commands, files and vectors refer to the feature. Case counts.
  const std::string& GetName() const { return name; }
  bool NeedsGrayscale() const { return needsGrayscale; }
  /// Color wins over gray where a feature needs both.
  bool NeedsColor() const { return needsColor; }

 protected:
  TFeature() = default;

  std::string name;
  std::optional<std::uint32_t> length;
  bool needsGrayscale = false;
  bool needsColor = false;
};
