#pragma once

#include <string>
#include <vector>

#include "concepts/concept-command.h"

/// findvisualconceptlocations: labels the segments of an image, or of all images of a database, on which a concept is
/// found, and takes the labels from all others.
class TFunctionFindVisualConceptLocations : public TConceptCommand {
 public:
  TFunctionFindVisualConceptLocations();
  bool Execute(const std::vector<std::string>& params) override;
};
