#include "gui/function-display-index.h"

#include <QImage>

#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/index-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/tile.h"
#include "retrieval/var-database-index.h"

TFunctionDisplayIndex::TFunctionDisplayIndex()
    : TFunction({.name = "displayindex", .kinds = {"variable", "boolean"}, .optional = 1, .help = R"(
Name:        DisplayIndex
Description: Displays the top results of a 'databaseindex' as a 4x4 grid
Syntax:      displayindex(a)
Returns:     nothing
Parameters:  1 - 'databaseindex'
Parameters:  2 - bool (ShowQueryImage))"}) {}

bool TFunctionDisplayIndex::Execute(const std::vector<std::string>& params) {
  const auto* index = FindVariable<TVarDatabaseIndex>(params[0]);
  if (index == nullptr) {
    Print("Parameter is not of type 'databaseindex'");
    return false;
  }
  const bool showsQuery = !index->GetImageName().empty() && (params.size() < 2 || params[1] == "true");
  std::string reason;
  auto results = index->FindTop(*varList, TIndexDisplay::kTileCount - (showsQuery ? 1 : 0), reason);
  if (!results) {
    Print(reason);
    return false;
  }
  if (showsQuery) {
    results->insert(results->begin(), {index->GetImageName(), "Query\n" + index->GetImageName()});
  }
  TIndexDisplay dialog;
  dialog.setAccessibleName(ToQString(index->GetTitle()));
  const qreal ratio = dialog.devicePixelRatioF();
  TImageRGB tile;
  int position = 0;
  for (const auto& [filename, description] : *results) {
    QImage picture;
    if (LoadTile(filename, qRound(160 * ratio), tile)) {
      picture = ToQImage(tile);
      picture.setDevicePixelRatio(ratio);
    }
    dialog.SetImage(picture, position, {QRect(), filename, description});
    ++position;
  }
  RunDialog(dialog);
  return true;
}
