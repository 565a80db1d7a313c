#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "features/feature.h"

/// A feature from a library in the working directory (sdk/feature-plugin.h is the interface). The library stays loaded
/// until the program ends.
class TFeaturePlugin : public TFeature {
 public:
  /// Loads the library of that file name. Null, and the reason, if it does not load, lacks an export that it needs, or
  /// says things of itself that the program cannot work with.
  static std::unique_ptr<TFeaturePlugin> Load(const std::string& fileName, std::string& reason);

  /// The library's file.
  const std::string& GetFile() const { return file; }

  bool ProcessColor(const TImageRGB& image, TFeatureVector& vector) const override;
  bool ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const override;

 private:
  using TGetText = const char*();
  /// The low byte of what the library returns. A careless one answers with more than 0 and 1.
  using TGetFlag = unsigned char();
  using TGetLength = std::int32_t();
  using TProcess = std::int32_t(const unsigned char*, std::int32_t, std::int32_t, std::int32_t, double*);

  TFeaturePlugin() = default;

  /// Gives the vector its name and the length that the library asks for. False if that length is out of range.
  bool PrepareVector(TFeatureVector& vector) const;

  std::string file;
  TGetText* getShortDescription = nullptr;
  TGetFlag* askNeedsGrayscale = nullptr;
  TGetFlag* askNeedsColor = nullptr;
  TGetLength* getFeatureLength = nullptr;
  TProcess* processGrayscale = nullptr;
  TProcess* processColor = nullptr;
};
