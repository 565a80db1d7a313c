#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// loadimage: an image variable for an existing file. The file is not opened, so it may be no image at all.
class TFunctionLoadImage : public TFunction {
 public:
  TFunctionLoadImage();
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;
};
