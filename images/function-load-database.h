#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// loaddatabase: a database variable for the images of a directory.
class TFunctionLoadDatabase : public TFunction {
 public:
  TFunctionLoadDatabase();
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;
};
