#pragma once

#include <string>
#include <vector>

#include "images/image-command.h"

/// savefeature: writes one feature of all images of a database into "FeatureStorage". Images without it are
/// skipped, and so are those whose picture could not be read when it was computed.
class TFunctionSaveFeature : public TImageCommand {
 public:
  TFunctionSaveFeature();
  bool Execute(const std::vector<std::string>& params) override;
};
