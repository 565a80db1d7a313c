#pragma once

#include <string>
#include <vector>

#include "base/file.h"
#include "images/image-command.h"

class TStoredFeatureReader;
class TVarImage;

/// loadfeature: reads one feature of the running system for all images of a database from "FeatureStorage". Images
/// without a file there, or with one of another length than the feature's, stay as they are, and are counted; so are
/// vectors that are known to come from other pictures.
class TFunctionLoadFeature : public TImageCommand {
 public:
  TFunctionLoadFeature();
  bool Execute(const std::vector<std::string>& params) override;

 private:
  base::TReadOutcome LoadImage(TStoredFeatureReader& reader, const std::string& featureName, TVarImage& image) const;
};
