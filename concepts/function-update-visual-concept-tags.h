#pragma once

#include <string>
#include <vector>

#include "concepts/concept-command.h"

/// updatevisualconcepttags: labels the segments of a database as findvisualconceptlocations does, and tags every image
/// on which the concept was found.
class TFunctionUpdateVisualConceptTags : public TConceptCommand {
 public:
  TFunctionUpdateVisualConceptTags();
  bool Execute(const std::vector<std::string>& params) override;
};
