#pragma once

#include "engine/function.h"

// Commands on the workbench itself.
extern const TFunctionFactory kMakeExecuteScript;
extern const TFunctionFactory kMakeReset;
