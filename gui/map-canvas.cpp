#include "gui/map-canvas.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>

#include "gui/to-qimage.h"
#include "images/tile.h"

namespace {

// Logical pixels.
constexpr int kCanvasSize = 800;
constexpr int kCenter = kCanvasSize / 2;
constexpr int kTileWidth = 120;

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

}  // namespace

TMapCanvas::TMapCanvas(int theCount, qreal theRatio) : count(theCount), ratio(theRatio) {
  const int size = qRound(kCanvasSize * ratio);
  // In pixels of the screen, and black.
  canvas.SetSize(size, size, true);
}

void TMapCanvas::Draw(const std::string& filename, const std::string& description, int rank, TPictureReport& report) {
  // Whole degrees. y grows downwards on the screen, hence the minus below. Drawn before the file is read, so that one
  // that cannot be read does not move the others.
  const double angle = (std::rand() % 360) * std::numbers::pi / 180.0;
  const double x = kCenter + std::cos(angle) * rank * kCenter / count;
  const double y = kCenter + std::sin(angle) * -rank * kCenter / count;
  if (!LoadTile(filename, qRound(kTileWidth * ratio), tile, &report)) {
    return;
  }
  DrawTile(tile, static_cast<int>(x * ratio), static_cast<int>(y * ratio), canvas);
  const int height = qRound(tile.GetHeight() / ratio);
  items.push_back({QRect(static_cast<int>(x) - kTileWidth / 2, static_cast<int>(y) - height / 2, kTileWidth, height),
                   filename, description});
}

QImage TMapCanvas::GetPicture() const {
  QImage picture = ToQImage(canvas);
  picture.setDevicePixelRatio(ratio);
  return picture;
}
