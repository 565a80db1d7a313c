#include "concepts/var-visual-concept-locations.h"

TVarVisualConceptLocations::TVarVisualConceptLocations() : TVar(kTypeName) {}

std::unique_ptr<TVar> TVarVisualConceptLocations::CreateNew() const {
  return std::make_unique<TVarVisualConceptLocations>();
}

void TVarVisualConceptLocations::Assign(const TVar* /*source*/) {}

std::string TVarVisualConceptLocations::GetDescription() const {
  return "visualconceptlocations";
}
