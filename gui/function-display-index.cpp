#include "gui/function-display-index.h"

#include <QImage>

#include "gui/dialog-runner.h"
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
  auto filenames = index->FindTopFilenames(*varList, TIndexDisplay::kTileCount - (showsQuery ? 1 : 0), reason);
  if (!filenames) {
    Print(reason);
    return false;
  }
  if (showsQuery) {
    filenames->insert(filenames->begin(), index->GetImageName());
  }
  TIndexDisplay dialog;
  TImageRGB tile;
  for (std::size_t i = 0; i < filenames->size(); ++i) {
    if (LoadTile((*filenames)[i], 160, tile)) {
      dialog.SetImage(ToQImage(tile), static_cast<int>(i));
    }
  }
  RunDialog(dialog);
  return true;
}
