#pragma once

#include "engine/function.h"

// Commands that show images and rankings.
extern const TFunctionFactory kMakeDisplayImage;
extern const TFunctionFactory kMakeDisplayIndexMap;
extern const TFunctionFactory kMakeDisplayIndex;
