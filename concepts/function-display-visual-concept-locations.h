#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// displayvisualconceptlocations: tests its parameters and ends there, since no command makes a variable of the second
/// one's type; displayimage shows where a concept was found.
class TFunctionDisplayVisualConceptLocations : public TFunction {
 public:
  TFunctionDisplayVisualConceptLocations();
  bool Execute(const std::vector<std::string>& params) override;
};
