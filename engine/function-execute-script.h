#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

/// executescript: runs the lines of a file like typed ones. A line that fails does not stop the script. A script that
/// is already running is not started again, and scripts nest to a fixed depth.
class TFunctionExecuteScript : public TFunction {
 public:
  TFunctionExecuteScript();
  bool Execute(const std::vector<std::string>& params) override;

 private:
  /// Identities of the files of the scripts under way, the outermost first.
  std::vector<std::string> running;
};
