#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include <QImage>

#include "base/format-string.h"
#include "engine/command-factories.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/image-display.h"
#include "gui/index-display.h"
#include "gui/map-canvas.h"
#include "gui/segment-outlines.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/tile.h"
#include "images/var-image.h"
#include "retrieval/var-database-index.h"

namespace {

/// The width of a tile of the grid, in logical pixels.
constexpr int kTileWidth = 160;
constexpr std::size_t kMapTiles = 40;

/// displayimage: shows an image and the outlines of its segments, in green those that carry a label.
class TFunctionDisplayImage : public TFunction {
 public:
  TFunctionDisplayImage()
      : TFunction({.name = "displayimage", .kinds = {"variable"}, .help = R"(
Name:        DisplayImage
Description: Displays a variable of type 'image'
Syntax:      displayimage(a)
Returns:     nothing
Parameters:  1 - 'image')"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* image = FindVariable<TVarImage>(params[0]);
    if (image == nullptr) {
      return Fail("Parameter is not of type 'image'");
    }
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    // Nobody would see the picture, and decoding it takes most of the time.
    if (!DialogsAreShown()) {
      report.Check(image->GetFilename());
      return true;
    }
    TImageRGB picture;
    report.Load(image->GetFilename(), picture);
    QImage canvas = ToQImage(picture);
    DrawSegments(image->GetSegments(), canvas);
    TImageDisplay dialog;
    dialog.SetImage(canvas, DescribeSegments(image->GetSegments(), image->GetFilename(),
                                             image->GetFilename() + image->DescribeTags()));
    dialog.setAccessibleName(
        ToQString(FormatString("Image '%s', file '%s'", params[0].c_str(), image->GetFilename().c_str())));
    RunDialog(dialog);
    return true;
  }
};

/// The top of a ranking.
struct TRankingTop {
  std::string title;
  /// Best first, behind the query if that is to be shown as well.
  std::vector<TTopResult> results;
  bool hasQuery;
};

/// Base of the commands that show the top of a ranking, and the query with it unless the second parameter is "false".
class TIndexCommand : public TFunction {
 protected:
  using TFunction::TFunction;

  /// The first `most` results, one less with a query if that counts as one. Nothing if the first parameter is no
  /// ranking or its database is gone; the reason has been printed.
  std::optional<TRankingTop> RequireTop(const std::vector<std::string>& params, std::size_t most,
                                        bool countsQuery) const {
    const auto* index = FindVariable<TVarDatabaseIndex>(params[0]);
    if (index == nullptr) {
      Print("Parameter is not of type 'databaseindex'");
      return std::nullopt;
    }
    const std::string& query = index->GetImageName();
    // By default the query is shown; a ranking by a tag has none.
    const bool hasQuery = !query.empty() && (params.size() < 2 || params[1] == "true");
    std::string reason;
    auto results = index->FindTop(*varList, most - (countsQuery && hasQuery ? 1 : 0), reason);
    if (!results) {
      Print(reason);
      return std::nullopt;
    }
    if (hasQuery) {
      results->insert(results->begin(), {query, "Query\n" + query});
    }
    return TRankingTop{index->GetTitle(), std::move(*results), hasQuery};
  }

  /// Calls `draw` with the number of each result; where nobody would see it, only tells of files that cannot be read.
  /// False if the user ended it.
  bool DrawAll(const std::vector<TTopResult>& results,
               const boost::function<void(std::size_t, TPictureReport&)>& draw) const {
    // One report for all, so that a hundred bad files make eleven lines and not a hundred.
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    const auto step = [&](std::size_t i) {
      if (DialogsAreShown()) {
        draw(i, report);
      } else {
        report.Check(results[i].filename);
      }
      return true;
    };
    return ForEach(results.size(), step, [&] { report.PrintRest(); });
  }
};

/// displayindex: shows the top of a ranking as a grid of 4 x 4 tiles, the query first.
class TFunctionDisplayIndex : public TIndexCommand {
 public:
  TFunctionDisplayIndex()
      : TIndexCommand({.name = "displayindex", .kinds = {"variable", "boolean"}, .optional = 1, .help = R"(
Name:        DisplayIndex
Description: Displays the top results of a 'databaseindex' as a 4x4 grid
Syntax:      displayindex(a)
Returns:     nothing
Parameters:  1 - 'databaseindex'
Parameters:  2 - bool (ShowQueryImage))"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    // The query takes a tile of its own, so that fewer results have a place beside it.
    const auto top = RequireTop(params, TIndexDisplay::kTileCount, true);
    if (!top) {
      return false;
    }
    TIndexDisplay dialog;
    dialog.setAccessibleName(ToQString(top->title));
    // Pixels of the screen for a logical one: 2 on a screen of twice the usual density, where a tile of the plain width
    // would be enlarged and blurred.
    const qreal ratio = dialog.devicePixelRatioF();
    TImageRGB tile;
    const auto draw = [&](std::size_t i, TPictureReport& report) {
      const auto& [filename, description] = top->results[i];
      QImage picture;
      if (LoadTile(filename, qRound(kTileWidth * ratio), tile, &report)) {
        picture = ToQImage(tile);
        // The tile was loaded with as many pixels as the screen has for it; the toolkit must not enlarge it again.
        picture.setDevicePixelRatio(ratio);
      }
      dialog.SetImage(picture, static_cast<int>(i), {QRect(), filename, description});
    };
    if (!DrawAll(top->results, draw)) {
      return false;
    }
    RunDialog(dialog);
    return true;
  }
};

/// displayindexmap: draws the top of a ranking on one canvas, each picture in a random direction, the best in the
/// middle and weaker ones towards the rim.
class TFunctionDisplayIndexMap : public TIndexCommand {
 public:
  TFunctionDisplayIndexMap()
      : TIndexCommand({.name = "displayindexmap", .kinds = {"variable", "boolean"}, .optional = 1, .help = R"(
Name:        DisplayIndexMap
Description: Displays the top results of a 'databaseindex' as a 2D map
Syntax:      displayindexmap(dbindex)
Returns:     nothing
Parameters:  1 - 'databaseindex'
Parameters:  2 - bool (ShowQueryImage))"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    // The query lies on top of the others and takes no place from them.
    auto top = RequireTop(params, kMapTiles, false);
    if (!top) {
      return false;
    }
    // The worst is drawn first, so that the best lie on top, and the query on all of them.
    std::reverse(top->results.begin(), top->results.end());
    const int count = static_cast<int>(top->results.size()) - (top->hasQuery ? 1 : 0);
    TImageDisplay dialog;
    dialog.setAccessibleName(ToQString(top->title));
    TMapCanvas map(count, dialog.devicePixelRatioF());
    const auto draw = [&](std::size_t i, TPictureReport& report) {
      const auto& [filename, description] = top->results[i];
      map.Draw(filename, description, count - 1 - static_cast<int>(i), report);
    };
    if (!DrawAll(top->results, draw)) {
      return false;
    }
    dialog.SetImage(map.GetPicture(), map.GetItems());
    RunDialog(dialog);
    return true;
  }
};

}  // namespace

const TFunctionFactory kMakeDisplayImage = MakeFunction<TFunctionDisplayImage>;
const TFunctionFactory kMakeDisplayIndex = MakeFunction<TFunctionDisplayIndex>;
const TFunctionFactory kMakeDisplayIndexMap = MakeFunction<TFunctionDisplayIndexMap>;
