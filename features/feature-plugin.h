#pragma once

#include <memory>
#include <string>

#include "features/feature.h"
#include "features/plugin-exports.h"

/// A feature from a library (sdk/feature-plugin.h is the interface), which stays loaded until the program ends.
class TFeaturePlugin : public TFeature {
 public:
  /// Loads the library of that file name. Null, and the reason, if it does not load, refuses to work, lacks an export
  /// that it needs, or says things of itself that the program cannot work with.
  static std::unique_ptr<TFeaturePlugin> Load(const std::string& fileName, std::string& reason);

  std::optional<std::uint32_t> GetLength() const override;

  /// The library's file.
  const std::string& GetFile() const { return file; }

  bool ProcessColor(const TImageRGB& image, TFeatureVector& vector) const override;
  bool ProcessGrayscale(const TImageGray& image, TFeatureVector& vector) const override;

 private:
  explicit TFeaturePlugin(const TPluginExports& exports);

  /// Gives the vector its name and the length that the library asks for. False if that length is out of range.
  bool PrepareVector(TFeatureVector& vector) const;

  std::string file;
  TPluginExports exports;
};
