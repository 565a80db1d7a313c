#include "retrieval/commands.h"

#include <algorithm>

#include <QImage>

#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/run-program.h"
#include "engine/function.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/image-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/plot-script.h"
#include "retrieval/recall-precision-text.h"
#include "retrieval/recall-precision.h"
#include "retrieval/var-database-index.h"

namespace {

constexpr const char* kCurveFile = "recallprecision.txt";
constexpr const char* kScriptFile = "recallprecision.plt";
constexpr const char* kChartFile = "recallprecision.png";
// Milliseconds.
constexpr int kSettlingTime = 500;

TRecallPrecision Measure(const TVarDatabase& database, const TVarDatabaseIndex& index, const std::string& tag) {
  // Looked for once an image: both the ranks and the total need the answer, and tags are strings.
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

/// evaluateindex: measures a ranking against the images that carry a tag. Leaves the recall/precision curve, a script
/// for gnuplot and its drawing in the working directory, prints MAP and shows the drawing.
class TFunctionEvaluateIndex : public TFunction {
 public:
  TFunctionEvaluateIndex()
      : TFunction({.name = "evaluateindex", .kinds = {"variable", "string"}, .help = R"(
Name:        EvaluateIndex
Description: Evaluates ground truth data for a given tag in a 'databaseindex'
Syntax:      EvaluateIndex(db, "tree")
Returns:     nothing
Parameters:  1 - 'databaseindex'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* index = Require<TVarDatabaseIndex>(params, 1);
    const std::string tag = StripQuotes(params[1]);
    if (index == nullptr) {
      return false;
    }
    std::string reason;
    const TVarDatabase* database = index->FindDatabase(*varList, reason);
    if (database == nullptr) {
      return Fail(reason);
    }
    const TRecallPrecision result = Measure(*database, *index, tag);
    // Any carrier of the tag, wherever it ranks, adds to the precision.
    const bool hasCarrier = result.averagePrecision > 0.0;
    if (!hasCarrier) {
      Print(FormatString("No image carries the tag '%s'", tag.c_str()));
    }
    Print(FormatString("MAP: %.08f", result.averagePrecision));
    if (!Write(kCurveFile, FormatCurve(result.curve)) || !Write(kScriptFile, FormatPlotScript(tag))) {
      return false;
    }
    // Whatever happens from here on, no chart of an earlier evaluation is taken for one of this.
    const bool isRemoved = base::RemoveFile(kChartFile);
    if (!IsSafePlotTitle(tag)) {
      Print("Tag cannot be drawn");
    } else if (hasCarrier) {
      DrawAndShowChart(*index, isRemoved);
    }
    return true;
  }

 private:
  /// Has gnuplot draw the chart and shows it; prints a line if there is none. `isRemoved` tells that none of an earlier
  /// evaluation stands in its place.
  void DrawAndShowChart(const TVarDatabaseIndex& index, bool isRemoved) const {
    // The file system of a slow disk or share may show the script, and then the chart, a moment late.
    Pause(kSettlingTime);
    base::RunGnuplot(kScriptFile);
    Pause(kSettlingTime);
    TImageRGB chart;
    // A file whose name differs in case is not the one that gnuplot was to write.
    const bool isExact = base::NativePath(kChartFile) == kChartFile;
    const bool isDrawn = isRemoved && isExact && base::IsRegularFile(kChartFile);
    if (isDrawn && (!chart.LoadFromFile(kChartFile) || chart.IsDamaged())) {
      // gnuplot does not tell of a full disk, and half a chart is none.
      base::RemoveFile(kChartFile);
      PrintLoss(FormatString("File '%s' cannot be read", kChartFile));
      return;
    }
    if (!isDrawn) {
      Print(FormatString("Chart '%s' was not drawn: is gnuplot installed?", kChartFile));
      return;
    }
    TImageDisplay dialog;
    // The chart is read back from the file, so that what is shown is what was left in the working directory.
    dialog.SetImage(ToQImage(chart), {{QRect(), kChartFile, kChartFile}});
    dialog.setAccessibleName(ToQString(FormatString("Chart of '%s', file '%s'", index.GetName().c_str(), kChartFile)));
    RunDialog(dialog);
  }

  /// Replaces a file; prints a line if that fails.
  bool Write(const char* filename, const std::string& bytes) const {
    return base::ReplaceFile(filename, bytes.data(), bytes.size()) ||
           Fail(FormatString("File '%s' cannot be written", filename));
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeEvaluateIndex() {
  return std::make_unique<TFunctionEvaluateIndex>();
}
