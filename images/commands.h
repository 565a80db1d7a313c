#pragma once

#include "engine/function.h"

// Commands that load images and databases.
extern const TFunctionFactory kMakeLoadDatabase;
extern const TFunctionFactory kMakeLoadImage;
