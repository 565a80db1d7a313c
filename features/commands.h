#pragma once

#include <memory>

class TFunction;

// Commands that compute, store, load and remove features.
std::unique_ptr<TFunction> MakeLoadFeature();
std::unique_ptr<TFunction> MakeRemoveFeature();
std::unique_ptr<TFunction> MakeSaveFeature();
std::unique_ptr<TFunction> MakeUpdateFeature();
