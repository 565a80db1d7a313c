#pragma once

#include <string>
#include <vector>

#include "images/image-command.h"

/// savefeature: writes one feature of all images of a database into "FeatureStorage". Images without it are skipped.
class TFunctionSaveFeature : public TImageCommand {
 public:
  TFunctionSaveFeature();
  bool Execute(const std::vector<std::string>& params) override;

 private:
  /// Says that the file cannot be written. Always false.
  bool RefuseFile(const std::string& path) const;
};
