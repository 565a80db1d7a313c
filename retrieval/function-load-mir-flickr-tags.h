#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// loadmirflickrtags: tags images of a database by an annotation file that lists their positions, counted from 1. The
/// name of the file, up to its first full stop, is the tag.
class TFunctionLoadMirFlickrTags : public TFunction {
 public:
  TFunctionLoadMirFlickrTags();
  bool Execute(const std::vector<std::string>& params) override;
};
