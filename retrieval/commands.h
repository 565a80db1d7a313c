#pragma once

#include <memory>

class TFunction;

// Commands that rank the images of a database, and judge a ranking.
std::unique_ptr<TFunction> MakeEvaluateIndex();
std::unique_ptr<TFunction> MakeLoadMirFlickrTags();
std::unique_ptr<TFunction> MakeSearchImage();
std::unique_ptr<TFunction> MakeSearchTags();
