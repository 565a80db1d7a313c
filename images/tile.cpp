#include "images/tile.h"

#include <cstdint>

#include "images/image-rgb.h"

bool LoadTile(const std::string& filename, int width, TImageRGB& tile) {
  // The toolkit paints no pixmap that is higher than this.
  constexpr std::int64_t kMaxHeight = 32767;
  TImageRGB picture;
  if (!picture.LoadFromFile(filename)) {
    return false;
  }
  const std::int64_t height = static_cast<std::int64_t>(picture.GetHeight()) * width / picture.GetWidth();
  if (height > kMaxHeight) {
    return false;
  }
  picture.ScaleTo(tile, width, static_cast<int>(height));
  return true;
}
