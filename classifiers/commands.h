#pragma once

#include <memory>

class TFunction;

// Commands that make classifiers and show and change their settings.
std::unique_ptr<TFunction> MakeCreateClassifier();
std::unique_ptr<TFunction> MakeGetClassifierSetting();
std::unique_ptr<TFunction> MakeSetClassifierSetting();
