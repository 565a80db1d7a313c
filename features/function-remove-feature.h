#pragma once

#include <string>
#include <vector>

#include "images/image-command.h"

/// removefeature: takes the vectors of that name, which need not be a known feature, from an image or from every image
/// of a database, and from their segments.
class TFunctionRemoveFeature : public TImageCommand {
 public:
  TFunctionRemoveFeature();
  bool Execute(const std::vector<std::string>& params) override;
};
