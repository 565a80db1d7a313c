#include "gui/function-display-index-map.h"

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
#include "images/tile.h"
#include "retrieval/var-database-index.h"

namespace {

constexpr int kCanvasSize = 800;
constexpr int kCentre = kCanvasSize / 2;
constexpr int kTileWidth = 120;
constexpr std::size_t kMaxTiles = 40;

/// Copies the tile to the canvas around the centre x, y; what falls outside is cut.
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

/// Draws the results, the worst first, at distances from the middle that fall with the rank among `count` results. A
/// query behind the best result lies one step beyond the middle. The canvas has `ratio` pixels for one of the screen's
/// logical ones. Returns what lies where.
std::vector<TPictureItem> DrawMap(const std::vector<TTopResult>& results, int count, qreal ratio, TImageRGB& canvas) {
  TImageRGB tile;
  std::vector<TPictureItem> items;
  int rank = count - 1;
  for (const auto& [filename, description] : results) {
    const double angle = (std::rand() % 360) * std::numbers::pi / 180.0;
    const double x = kCentre + std::cos(angle) * rank * kCentre / count;
    const double y = kCentre + std::sin(angle) * -rank * kCentre / count;
    if (LoadTile(filename, qRound(kTileWidth * ratio), tile)) {
      DrawTile(tile, static_cast<int>(x * ratio), static_cast<int>(y * ratio), canvas);
      const int height = qRound(tile.GetHeight() / ratio);
      items.push_back(
          {QRect(static_cast<int>(x) - kTileWidth / 2, static_cast<int>(y) - height / 2, kTileWidth, height), filename,
           description});
    }
    --rank;
  }
  return items;
}

}  // namespace

TFunctionDisplayIndexMap::TFunctionDisplayIndexMap()
    : TFunction({.name = "displayindexmap", .kinds = {"variable", "boolean"}, .optional = 1, .help = R"(
Name:        DisplayIndexMap
Description: Displays the top results of a 'databaseindex' as a 2D map
Syntax:      displayindexmap(dbindex)
Returns:     nothing
Parameters:  1 - 'databaseindex'
Parameters:  2 - bool (ShowQueryImage))"}) {}

bool TFunctionDisplayIndexMap::Execute(const std::vector<std::string>& params) {
  const auto* index = FindVariable<TVarDatabaseIndex>(params[0]);
  if (index == nullptr) {
    Print("Parameter is not of type 'databaseindex'");
    return false;
  }
  const bool showsQuery = !index->GetImageName().empty() && (params.size() < 2 || params[1] == "true");
  std::string reason;
  auto results = index->FindTop(*varList, kMaxTiles, reason);
  if (!results) {
    Print(reason);
    return false;
  }
  const int count = static_cast<int>(results->size());
  std::reverse(results->begin(), results->end());
  if (showsQuery) {
    results->push_back({index->GetImageName(), "Query\n" + index->GetImageName()});
  }
  TImageDisplay dialog;
  dialog.setAccessibleName(ToQString(index->GetTitle()));
  const qreal ratio = dialog.devicePixelRatioF();
  const int canvasSize = qRound(kCanvasSize * ratio);
  TImageRGB canvas;
  canvas.SetSize(canvasSize, canvasSize, true);
  const std::vector<TPictureItem> items = DrawMap(*results, count, ratio, canvas);
  QImage picture = ToQImage(canvas);
  picture.setDevicePixelRatio(ratio);
  dialog.SetImage(picture, items);
  RunDialog(dialog);
  return true;
}
