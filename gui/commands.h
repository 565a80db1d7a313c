#pragma once

#include <memory>

class TFunction;

// Commands that show images and rankings.
std::unique_ptr<TFunction> MakeDisplayImage();
std::unique_ptr<TFunction> MakeDisplayIndexMap();
std::unique_ptr<TFunction> MakeDisplayIndex();
