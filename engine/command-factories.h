#pragma once

#include "engine/function.h"

/// Makes a command. The wings hand out their commands in this way, without showing the classes.
using TFunctionFactory = std::unique_ptr<TFunction> (*)();

template <typename TCommand>
std::unique_ptr<TFunction> MakeFunction() {
  return std::make_unique<TCommand>();
}

// Each stands in commands.cpp of its wing.
extern const TFunctionFactory kMakeLoadImage;
extern const TFunctionFactory kMakeLoadDatabase;
extern const TFunctionFactory kMakeDisplayImage;
extern const TFunctionFactory kMakeUpdateFeature;
extern const TFunctionFactory kMakeSearchImage;
extern const TFunctionFactory kMakeLoadFeature;
extern const TFunctionFactory kMakeSaveFeature;
extern const TFunctionFactory kMakeDisplayIndex;
extern const TFunctionFactory kMakeDisplayIndexMap;
extern const TFunctionFactory kMakeLearnVisualConcept;
extern const TFunctionFactory kMakeFindVisualConceptLocations;
extern const TFunctionFactory kMakeDisplayVisualConceptLocations;
extern const TFunctionFactory kMakeUpdateVisualConceptTags;
extern const TFunctionFactory kMakeSearchTags;
extern const TFunctionFactory kMakeSegmentImage;
extern const TFunctionFactory kMakeLoadMirFlickrTags;
extern const TFunctionFactory kMakeExecuteScript;
extern const TFunctionFactory kMakeEvaluateIndex;
extern const TFunctionFactory kMakeRemoveFeature;
extern const TFunctionFactory kMakeCreateClassifier;
extern const TFunctionFactory kMakeGetClassifierSetting;
extern const TFunctionFactory kMakeSetClassifierSetting;
extern const TFunctionFactory kMakeReset;
