#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// findvisualconceptlocations: labels the segments of an image, or of all images of a database, on which a concept is
/// found, and takes the labels from all others.
class TFunctionFindVisualConceptLocations : public TFunction {
 public:
  TFunctionFindVisualConceptLocations();
  bool Execute(const std::vector<std::string>& params) override;
};
