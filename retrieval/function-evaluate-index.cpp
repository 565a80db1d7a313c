#include "retrieval/function-evaluate-index.h"

#include <algorithm>

#include <QImage>

#include "base/file.h"
#include "base/format-string.h"
#include "base/run-program.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/image-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/recall-precision.h"
#include "retrieval/var-database-index.h"

namespace {

constexpr const char* kCurveFile = "recallprecision.txt";
constexpr const char* kScriptFile = "recallprecision.plt";
constexpr const char* kChartFile = "recallprecision.png";

TRecallPrecision Measure(const TVarDatabase& database, const TVarDatabaseIndex& index, const std::string& tag) {
  std::vector<bool> carriesTag;
  carriesTag.reserve(database.GetImages().size());
  for (const auto& image : database.GetImages()) {
    carriesTag.push_back(image->HasTag(tag));
  }
  std::vector<bool> relevance;
  relevance.reserve(index.GetEntries().size());
  for (const TDatabaseIndexEntry& entry : index.GetEntries()) {
    relevance.push_back(carriesTag[static_cast<std::size_t>(entry.imageIndex)]);
  }
  return MeasureRanking(relevance, static_cast<int>(std::count(carriesTag.begin(), carriesTag.end(), true)));
}

void DrawAndShowChart(const TVarDatabaseIndex& index) {
  base::Pause(500);
  base::RunGnuplot(kScriptFile);
  base::Pause(500);
  TImageRGB chart;
  chart.LoadFromFile(kChartFile);
  TImageDisplay dialog;
  dialog.SetImage(ToQImage(chart), {{QRect(), kChartFile, kChartFile}});
  dialog.setAccessibleName(ToQString(FormatString("Chart of '%s', file '%s'", index.GetName().c_str(), kChartFile)));
  RunDialog(dialog);
}

}  // namespace

TFunctionEvaluateIndex::TFunctionEvaluateIndex() {
  name = "evaluateindex";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        EvaluateIndex",                                                     //
           "Description: Evaluates ground truth data for a given tag in a 'databaseindex'",  //
           "Syntax:      EvaluateIndex(db, \"tree\")",                                       //
           "Returns:     nothing",                                                           //
           "Parameters:  1 - 'databaseindex'",                                               //
           "             2 - string"});
}

bool TFunctionEvaluateIndex::Execute(const std::vector<std::string>& params) {
  const auto* index = FindVariable<TVarDatabaseIndex>(params[0]);
  const std::string tag = StripQuotes(params[1]);
  if (index == nullptr) {
    Print("First parameter is not of type 'databaseindex'");
    return false;
  }
  std::string reason;
  const TVarDatabase* database = index->FindDatabase(*varList, reason);
  if (database == nullptr) {
    Print(reason);
    return false;
  }
  const TRecallPrecision result = Measure(*database, *index, tag);
  Print(FormatString("MAP: %.08f", result.map));
  if (!Write(kCurveFile, result.curve) || !Write(kScriptFile, FormatPlotScript(tag))) {
    return false;
  }
  if (!IsSafePlotTitle(tag)) {
    Print("Tag cannot be drawn");
    return true;
  }
  DrawAndShowChart(*index);
  return true;
}

bool TFunctionEvaluateIndex::Write(const char* filename, const std::string& bytes) const {
  if (base::WriteFile(filename, bytes)) {
    return true;
  }
  Print(FormatString("File '%s' cannot be written", filename));
  return false;
}
