#pragma once

#include "engine/function.h"

// Commands that teach visual concepts and find them in images.
extern const TFunctionFactory kMakeDisplayVisualConceptLocations;
extern const TFunctionFactory kMakeFindVisualConceptLocations;
extern const TFunctionFactory kMakeLearnVisualConcept;
extern const TFunctionFactory kMakeUpdateVisualConceptTags;
