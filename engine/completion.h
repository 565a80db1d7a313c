#pragma once

#include <string>

#include "engine/view.h"

class TFeatureList;
class TFunctionList;
class TVarList;

/// What may stand at the end of a command line that is being typed; `before` is its text up to the cursor. Outside of
/// double quotes: commands, each with its opening bracket where it would be called, and variables; inside of the
/// brackets only variables. Inside of double quotes: what the command takes at that place, which is a feature, a
/// segmentation method, a type of classifier, a setting of the classifier that is the first parameter, or a file.
/// Letter case does not count. The candidates are in byte order. File names that the language has no way to say, such
/// as those with a comma, are left out.
TCompletion CompleteCommand(const std::string& before, const TFunctionList& functions, const TVarList& variables,
                            const TFeatureList& features);
