#pragma once

#include "engine/function.h"

// The command that cuts images into segments.
extern const TFunctionFactory kMakeSegmentImage;
