#include "gui/function-display-index-map.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>

#include <QImage>

#include "gui/dialog-runner.h"
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

/// Draws the files, the worst first, at distances from the middle that fall with the rank among `count` results. A
/// query behind the best result lies one step beyond the middle.
void DrawMap(const std::vector<std::string>& filenames, int count, TImageRGB& canvas) {
  TImageRGB tile;
  int rank = count - 1;
  for (const std::string& filename : filenames) {
    const double angle = (std::rand() % 360) * std::numbers::pi / 180.0;
    const int x = static_cast<int>(kCentre + std::cos(angle) * rank * kCentre / count);
    const int y = static_cast<int>(kCentre + std::sin(angle) * -rank * kCentre / count);
    if (LoadTile(filename, kTileWidth, tile)) {
      DrawTile(tile, x, y, canvas);
    }
    --rank;
  }
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
  auto filenames = index->FindTopFilenames(*varList, kMaxTiles, reason);
  if (!filenames) {
    Print(reason);
    return false;
  }
  const int count = static_cast<int>(filenames->size());
  std::reverse(filenames->begin(), filenames->end());
  if (showsQuery) {
    filenames->push_back(index->GetImageName());
  }
  TImageRGB canvas;
  canvas.SetSize(kCanvasSize, kCanvasSize, true);
  DrawMap(*filenames, count, canvas);
  TImageDisplay dialog;
  dialog.SetImage(ToQImage(canvas));
  RunDialog(dialog);
  return true;
}
