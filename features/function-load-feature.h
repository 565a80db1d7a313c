#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

class TVarImage;
namespace base {
class TFileReader;
}

/// loadfeature: reads one feature of the running system for all images of a database from "FeatureStorage". Images
/// without a file there stay as they are.
class TFunctionLoadFeature : public TFunction {
 public:
  TFunctionLoadFeature();
  bool Execute(const std::vector<std::string>& params) override;

 private:
  void LoadImage(base::TFileReader& reader, const std::string& featureName, TVarImage& image) const;
};
