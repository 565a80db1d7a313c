#pragma once

#include <memory>

class TFunction;

// Commands that teach visual concepts and find them in images.
std::unique_ptr<TFunction> MakeDisplayVisualConceptLocations();
std::unique_ptr<TFunction> MakeFindVisualConceptLocations();
std::unique_ptr<TFunction> MakeLearnVisualConcept();
std::unique_ptr<TFunction> MakeUpdateVisualConceptTags();
