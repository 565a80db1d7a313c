#include "images/tile.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "images/image-rgb.h"
#include "images/picture-report.h"

namespace {

/// The toolkit paints no pixmap that is higher than this.
constexpr std::int64_t kMaxHeight = 32767;

/// A picture that is this many times larger than its tile, in both directions, may be decoded at a part of its size.
constexpr std::int64_t kFarLarger = 8;
/// What is left of it then is at least this many times larger than the tile, so that the tile shows next to none of it.
constexpr std::int64_t kStillLarger = 4;

std::int64_t TileHeight(std::int64_t width, std::int64_t height, int tileWidth) {
  // Rounded down, so that a picture more than `tileWidth` times as wide as high has an empty tile. In 64 bits, as the
  // product of a long side and a width may exceed 32.
  return height * tileWidth / width;
}

/// The largest part of its size at which a picture may be decoded for its tile, as a divisor; 1 for the whole.
int Divisor(std::int64_t width, std::int64_t height, int tileWidth) {
  if (width <= 0) {
    return 1;
  }
  const std::int64_t tileHeight = TileHeight(width, height, tileWidth);
  const auto isLarger = [&](std::int64_t times, std::int64_t part) {
    return width / part >= times * tileWidth && height / part >= times * tileHeight;
  };
  // The reductions that a JPEG decoder gets for free: it leaves out the higher frequencies of each block of 8 x 8
  // samples.
  for (const int divisor : {8, 4, 2}) {
    if (isLarger(kFarLarger, 1) && isLarger(kStillLarger, divisor)) {
      return divisor;
    }
  }
  return 1;
}

}  // namespace

bool LoadTile(const std::string& filename, int width, TImageRGB& tile, TPictureReport* report) {
  // The file is opened twice. One that is replaced in between gives at worst a tile of the earlier proportions.
  const auto [jpegWidth, jpegHeight] = TImageRGB::JpegSize(filename);
  const int divisor = Divisor(jpegWidth, jpegHeight, width);
  TImageRGB picture;
  const bool isRead = divisor > 1 ? picture.LoadReduced(filename, divisor) : picture.LoadFromFile(filename);
  if (report != nullptr) {
    report->Note(filename, isRead, picture);
  }
  if (!isRead) {
    return false;
  }
  // Rounding may give the reduced picture slightly other proportions.
  const std::int64_t height = divisor > 1 ? TileHeight(jpegWidth, jpegHeight, width)
                                          : TileHeight(picture.GetWidth(), picture.GetHeight(), width);
  if (height > kMaxHeight) {
    return false;
  }
  picture.ScaleTo(tile, width, static_cast<int>(height));
  return true;
}

bool LoadThumbnail(const std::string& filename, int side, TImageRGB& thumbnail) {
  std::pair<std::int64_t, std::int64_t> size = TImageRGB::JpegSize(filename);
  // 0 for what is no JPEG, which is then decoded in full.
  const std::int64_t jpegSide = std::max(size.first, size.second);
  // The width that the thumbnail will have.
  const int divisor =
      jpegSide > side
          ? Divisor(size.first, size.second, static_cast<int>(std::max<std::int64_t>(1, size.first * side / jpegSide)))
          : 1;
  TImageRGB picture;
  if (!(divisor > 1 ? picture.LoadReduced(filename, divisor) : picture.LoadFromFile(filename))) {
    return false;
  }
  if (divisor == 1) {
    size = {picture.GetWidth(), picture.GetHeight()};
  }
  const std::int64_t longer = std::max(size.first, size.second);
  const std::int64_t shown = std::min<std::int64_t>(longer, side);
  const auto scaled = [&](std::int64_t length) {
    return static_cast<int>(std::max<std::int64_t>(1, length * shown / longer));
  };
  picture.ScaleTo(thumbnail, scaled(size.first), scaled(size.second));
  return true;
}
