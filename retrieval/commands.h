#pragma once

#include "engine/function.h"

// Commands that rank the images of a database, and judge a ranking.
extern const TFunctionFactory kMakeEvaluateIndex;
extern const TFunctionFactory kMakeLoadMirFlickrTags;
extern const TFunctionFactory kMakeSearchImage;
extern const TFunctionFactory kMakeSearchTags;
