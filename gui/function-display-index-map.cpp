#include "gui/commands.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>

#include <QImage>

#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/image-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/tile.h"
#include "retrieval/index-command.h"

namespace {

constexpr int kCanvasSize = 800;
constexpr int kCenter = kCanvasSize / 2;
constexpr int kTileWidth = 120;
constexpr std::size_t kMaxTiles = 40;

/// Copies the tile to the canvas around the center x, y; what falls outside is cut.
void DrawTile(const TImageRGB& tile, int x, int y, TImageRGB& canvas) {
  const int left = x - tile.GetWidth() / 2;
  const int top = y - tile.GetHeight() / 2;
  for (int row = 0; row < tile.GetHeight(); ++row) {
    const unsigned char* pixel = tile.GetPixels() + static_cast<std::ptrdiff_t>(row) * tile.GetStride();
    for (int column = 0; column < tile.GetWidth(); ++column, pixel += 3) {
      canvas.SetPixel(left + column, top + row, pixel[0], pixel[1], pixel[2]);
    }
  }
}

/// A canvas of the map, with `ratio` pixels for one of the screen's logical ones, and what lies where on it.
class TMapCanvas {
 public:
  TMapCanvas(int theCount, qreal theRatio) : count(theCount), ratio(theRatio) {
    const int size = qRound(kCanvasSize * theRatio);
    canvas.SetSize(size, size, true);
  }

  /// Draws a result in a random direction, at a distance from the middle that grows with its rank, from 0, among
  /// all that are shown. The query, of rank -1, lies one step beyond the middle.
  void Draw(const TTopResult& result, int rank, TPictureReport& report) {
    // Whole degrees. y grows downwards on the screen, hence the minus below.
    const double angle = (std::rand() % 360) * std::numbers::pi / 180.0;
    const double x = kCenter + std::cos(angle) * rank * kCenter / count;
    const double y = kCenter + std::sin(angle) * -rank * kCenter / count;
    if (!LoadTile(result.filename, qRound(kTileWidth * ratio), tile, &report)) {
      return;
    }
    DrawTile(tile, static_cast<int>(x * ratio), static_cast<int>(y * ratio), canvas);
    const int height = qRound(tile.GetHeight() / ratio);
    items.push_back({QRect(static_cast<int>(x) - kTileWidth / 2, static_cast<int>(y) - height / 2, kTileWidth, height),
                     result.filename, result.description});
  }

  QImage GetPicture() const {
    QImage picture = ToQImage(canvas);
    picture.setDevicePixelRatio(ratio);
    return picture;
  }

  const std::vector<TPictureItem>& GetItems() const { return items; }

 private:
  int count;
  qreal ratio;
  TImageRGB canvas;
  TImageRGB tile;
  std::vector<TPictureItem> items;
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
    auto top = RequireTop(params, kMaxTiles, false);
    if (!top) {
      return false;
    }
    // The worst is drawn first, so that the best lie on top.
    std::vector<TTopResult>& results = top->results;
    const int count = static_cast<int>(results.size());
    std::reverse(results.begin(), results.end());
    if (top->query) {
      results.push_back(*top->query);
    }
    TImageDisplay dialog;
    dialog.setAccessibleName(ToQString(top->index->GetTitle()));
    TMapCanvas map(count, dialog.devicePixelRatioF());
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    const auto draw = [&](std::size_t i) {
      if (DialogsAreShown()) {
        // From the last rank down to 0, and -1 for the query behind the others.
        map.Draw(results[i], count - 1 - static_cast<int>(i), report);
      } else {
        report.Check(results[i].filename);
      }
      return true;
    };
    if (!ForEach(results.size(), draw, [&] { report.PrintRest(); })) {
      return false;
    }
    dialog.SetImage(map.GetPicture(), map.GetItems());
    RunDialog(dialog);
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeDisplayIndexMap() {
  return std::make_unique<TFunctionDisplayIndexMap>();
}
