#include "gui/commands.h"

#include <QImage>

#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/index-display.h"
#include "gui/to-qimage.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/tile.h"
#include "retrieval/index-command.h"

namespace {

constexpr int kTileWidth = 160;

/// displayindex: shows the top of a ranking as a grid of 4 x 4 tiles, the query first unless the second parameter is
/// "false".
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
    auto top = RequireTop(params, TIndexDisplay::kTileCount, true);
    if (!top) {
      return false;
    }
    std::vector<TTopResult>& results = top->results;
    if (top->query) {
      results.insert(results.begin(), *top->query);
    }
    TIndexDisplay dialog;
    dialog.setAccessibleName(ToQString(top->index->GetTitle()));
    const qreal ratio = dialog.devicePixelRatioF();
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    TImageRGB tile;
    const auto show = [&](std::size_t i) {
      const auto& [filename, description] = results[i];
      if (!DialogsAreShown()) {
        report.Check(filename);
        return true;
      }
      QImage picture;
      if (LoadTile(filename, qRound(kTileWidth * ratio), tile, &report)) {
        picture = ToQImage(tile);
        // The tile was loaded with as many pixels as the screen has for it; the toolkit must not enlarge it again.
        picture.setDevicePixelRatio(ratio);
      }
      dialog.SetImage(picture, static_cast<int>(i), {QRect(), filename, description});
      return true;
    };
    if (!ForEach(results.size(), show, [&] { report.PrintRest(); })) {
      return false;
    }
    RunDialog(dialog);
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeDisplayIndex() {
  return std::make_unique<TFunctionDisplayIndex>();
}
