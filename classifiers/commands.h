#pragma once

#include "engine/function.h"

// Commands that make classifiers and show and change their settings.
extern const TFunctionFactory kMakeCreateClassifier;
extern const TFunctionFactory kMakeGetClassifierSetting;
extern const TFunctionFactory kMakeSetClassifierSetting;
