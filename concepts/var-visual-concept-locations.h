#pragma once

#include <memory>
#include <string>

#include "engine/var.h"

/// Where a concept was found, of type "visualconceptlocations". No command makes such a variable: what is found lies in
/// the labels of the segments.
class TVarVisualConceptLocations : public TVar {
 public:
  static constexpr const char* kTypeName = "visualconceptlocations";

  TVarVisualConceptLocations();

  std::unique_ptr<TVar> CreateNew() const override;
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;
};
