#pragma once

#include <memory>

class TFunction;

// Commands that load images and databases.
std::unique_ptr<TFunction> MakeLoadDatabase();
std::unique_ptr<TFunction> MakeLoadImage();
