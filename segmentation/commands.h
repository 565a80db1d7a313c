#pragma once

#include <memory>

class TFunction;

// The command that cuts images into segments.
std::unique_ptr<TFunction> MakeSegmentImage();
