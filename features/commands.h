#pragma once

#include "engine/function.h"

// Commands that compute, store, load and remove features.
extern const TFunctionFactory kMakeLoadFeature;
extern const TFunctionFactory kMakeRemoveFeature;
extern const TFunctionFactory kMakeSaveFeature;
extern const TFunctionFactory kMakeUpdateFeature;
