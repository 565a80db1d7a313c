#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

class TVarDatabaseIndex;

/// evaluateindex: measures a ranking against the images that carry a tag. Leaves the recall/precision curve, a script
/// for gnuplot and its drawing in the working directory, prints MAP and shows the drawing.
class TFunctionEvaluateIndex : public TFunction {
 public:
  TFunctionEvaluateIndex();
  bool Execute(const std::vector<std::string>& params) override;

 private:
  /// Replaces a file; prints a line if that fails.
  bool Write(const char* filename, const std::string& bytes) const;
  /// Has gnuplot draw the chart and shows it; prints a line if there is none. `isRemoved` tells that none of an earlier
  /// evaluation stands in its place.
  void DrawAndShowChart(const TVarDatabaseIndex& index, bool isRemoved) const;
};
