#include <algorithm>
#include <cmath>
#include <cstdint>

#include <QImage>

#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/run-program.h"
#include "base/text.h"
#include "engine/command-factories.h"
#include "engine/command-history.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/image-display.h"
#include "gui/to-qimage.h"
#include "images/image-command.h"
#include "images/image-rgb.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/annotation.h"
#include "retrieval/feature-distance.h"
#include "retrieval/plot-script.h"
#include "retrieval/recall-precision-text.h"
#include "retrieval/recall-precision.h"
#include "retrieval/var-database-index.h"

namespace {

/// How many images are compared between two looks at the window: some milliseconds' worth.
constexpr std::size_t kImagesAtATime = 32768;

/// The features that the first image of the database and the query have in common.
std::vector<std::string> CommonFeatures(const TVarDatabase& database, const TVarImage& query) {
  // In the order of the database, since sums of doubles depend on it and should not on how the query was made.
  auto names = database.GetImages().front()->GetImageSegment().GetFeatures().GetNames();
  const TFeatureVectorList& wanted = query.GetImageSegment().GetFeatures();
  // Names decide, not lengths: a vector of another length than the query's puts an image at infinity if it is shorter,
  // and counts up to the query's length if it is longer.
  std::erase_if(names, [&](const std::string& name) { return wanted.Find(name) == nullptr; });
  return names;
}

/// searchimage: ranks every image of a database by its distance from a query image, over the features that the first
/// image of the database and the query have in common.
class TFunctionSearchImage : public TFunction {
 public:
  TFunctionSearchImage()
      : TFunction({.name = "searchimage",
                   .kinds = {"variable", "variable"},
                   .returns = Returns<TVarDatabaseIndex>(),
                   .help = R"(
Name:        SearchImage
Description: Searches for an 'image' in a 'database' and stores the results
             in an index variable, with the first image being the best match
Syntax:      index = searchimage(database, image)
Returns:     'databaseindex'
Parameters:  1 - 'database'
             2 - 'image')"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& index = dynamic_cast<TVarDatabaseIndex&>(variable);
    const auto* database = Require<TVarDatabase>(params, 1);
    const auto* query = database == nullptr ? nullptr : Require<TVarImage>(params, 2);
    if (query == nullptr) {
      return false;
    }
    if (database->GetImages().empty()) {
      return Fail("Database does not contain images");
    }
    featureNames = CommonFeatures(*database, *query);
    if (featureNames.empty()) {
      return Fail("No features found to compare images with");
    }
    Print("Matching with features: " + base::Join(featureNames, ", "));
    // The old ranking goes only now, when nothing can refuse any more; a search that the user ends leaves the variable
    // to be removed by the controller.
    index.Begin(*database, query->GetFilename());
    const auto& images = database->GetImages();
    // In lots, since the distance works through one feature of many images at a time, which is what makes it fast. The
    // size of a lot changes no bit of a distance: each image has a sum of its own.
    std::vector<const TFeatureVectorList*> lists;
    bool anyCompares = false;
    std::size_t done = 0;
    while (done < images.size() && ReportProgress(done, images.size())) {
      lists.clear();
      for (std::size_t i = done; i < std::min(done + kImagesAtATime, images.size()); ++i) {
        lists.push_back(&images[i]->GetImageSegment().GetFeatures());
      }
      for (const double distance : GetDistances(query->GetImageSegment().GetFeatures(), featureNames, lists)) {
        index.AddEntry(static_cast<std::int32_t>(done++), distance);
        anyCompares = anyCompares || std::isfinite(distance);
      }
    }
    if (done < images.size()) {
      return Interrupted(done, images.size());
    }
    // No image has the features, and as many numbers of each as the query. The ranking stays, in the database's order.
    if (!anyCompares) {
      Print("No image can be compared");
    }
    index.SortEntries();
    return true;
  }

 private:
  /// The features of the latest search.
  std::vector<std::string> featureNames;
};

/// searchtags: ranks every image of a database by whether it carries a tag: at distance 0 if it does, at 1 if not.
class TFunctionSearchTags : public TImageCommand {
 public:
  TFunctionSearchTags()
      : TImageCommand(
            {.name = "searchtags", .kinds = {"variable", "string"}, .returns = Returns<TVarDatabaseIndex>(), .help = R"(
Name:        SearchTags
Description: Searches for a 'string' in a 'database' and stores the results
             in an index variable, with the first image being the best match
Syntax:      index = searchtags(database, "tree")
Returns:     'databaseindex'
Parameters:  1 - 'database'
             2 - 'string')"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& index = dynamic_cast<TVarDatabaseIndex&>(variable);
    const auto* database = RequireFilledDatabase(params, "Database does not contain images");
    const std::string tag = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    index.Begin(*database, "");
    std::int32_t imageIndex = 0;
    const auto step = [&](const TVarImage& image) {
      // Two distances only: the sort keeps ties in their order, so that the carriers come first, each group as in the
      // database.
      index.AddEntry(imageIndex++, image.HasTag(tag) ? 0.0 : 1.0);
      return true;
    };
    if (!ForEachImage(TImageSelection(*database), step)) {
      return false;
    }
    index.SortEntries();
    return true;
  }
};

/// loadmirflickrtags: tags images of a database by an annotation file that lists their positions, counted from 1. The
/// name of the file, up to its first full stop, is the tag.
class TFunctionLoadMirFlickrTags : public TFunction {
 public:
  TFunctionLoadMirFlickrTags()
      : TFunction({.name = "loadmirflickrtags", .kinds = {"variable", "string"}, .help = R"(
Name:        LoadMirFlickrTags
Description: Reads ground truth data for a 'database' that contains MIR-Flickr images
Syntax:      LoadMirFlickrTags(db, "C:\MIR-Flickr\tree.txt")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = Require<TVarDatabase>(params, 1);
    const std::string path = StripQuotes(params[1]);
    TCommandHistory annotations;
    if (database == nullptr || !LoadLines(path, annotations)) {
      return false;
    }
    const std::string tag = AnnotationTag(path);
    int strays = 0;
    for (const std::string& line : annotations.entries) {
      if (const auto position = AnnotatedPosition(line, database->GetImages().size())) {
        // Even if it stands there: a file that names an image twice tags it twice. Whoever asks for a tag looks whether
        // it stands there at least once.
        database->GetImages()[*position]->GetTags().push_back(tag);
      } else {
        ++strays;
      }
    }
    PrintCount(strays, "lines name no image");
    if (static_cast<std::size_t>(strays) == annotations.entries.size()) {
      Print("No image was tagged");
    }
    return true;
  }
};

// In the working directory, whatever the variables are called: an evaluation replaces the files of the one before.
constexpr const char* kCurveFile = "recallprecision.txt";
constexpr const char* kScriptFile = "recallprecision.plt";
constexpr const char* kChartFile = "recallprecision.png";
// Milliseconds.
constexpr int kSettlingTime = 500;

/// The relevance of each rank in turn, which is all that the measures need to know. An image is relevant if it carries
/// the tag; so is the query itself, which stands in the ranking like any other image.
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
    // The word of the field's tables for a mean over queries, of which this is the only one.
    Print(FormatString("MAP: %.08f", result.averagePrecision));
    if (!Write(kCurveFile, FormatCurve(result.curve)) || !Write(kScriptFile, FormatPlotScript(tag))) {
      return false;
    }
    // Both texts are left even if nothing can be drawn: the curve is of use to other programs.
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
    // What the call returns means different things on different platforms. The file decides.
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

const TFunctionFactory kMakeSearchImage = MakeFunction<TFunctionSearchImage>;
const TFunctionFactory kMakeSearchTags = MakeFunction<TFunctionSearchTags>;
const TFunctionFactory kMakeLoadMirFlickrTags = MakeFunction<TFunctionLoadMirFlickrTags>;
const TFunctionFactory kMakeEvaluateIndex = MakeFunction<TFunctionEvaluateIndex>;
