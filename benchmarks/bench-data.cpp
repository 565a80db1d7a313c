#include "benchmarks/bench-data.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <utility>

namespace filesystem = std::filesystem;

const TImageRGB& Mosaic(int width, int height) {
  static std::map<std::pair<int, int>, std::unique_ptr<TImageRGB>> known;
  auto& mosaic = known[{width, height}];
  if (mosaic) {
    return *mosaic;
  }
  mosaic = std::make_unique<TImageRGB>();
  mosaic->SetSize(width, height, true);
  int number = 0;
  for (int top = 0; top < height; top += 240) {
    for (int left = 0; left < width; left += 320) {
      TImageRGB photo;
      TImageRGB tile;
      if (!photo.LoadFromFile(SAMPLES_DIRECTORY "/photos/im" + std::to_string(number++ % 110 + 1) + ".jpg")) {
        std::abort();
      }
      photo.ScaleTo(tile, 320, 240);
      for (int y = 0; y < 240; ++y) {
        const unsigned char* pixel = tile.GetPixels() + static_cast<std::ptrdiff_t>(y) * tile.GetStride();
        for (int x = 0; x < 320; ++x, pixel += 3) {
          mosaic->SetPixel(left + x, top + y, pixel[0], pixel[1], pixel[2]);
        }
      }
    }
  }
  return *mosaic;
}

std::string PictureDirectory(int count, int width, int height) {
  const filesystem::path directory =
      filesystem::temp_directory_path() / "tessimar-bench" /
      (std::to_string(count) + "-" + std::to_string(width) + "x" + std::to_string(height));
  if (filesystem::exists(directory / "complete")) {
    return directory;
  }
  filesystem::create_directories(directory);
  const filesystem::path first = directory / "im1.jpg";
  if (width > 0) {
    Mosaic(width, height).SaveToFile(first);
  } else {
    std::ofstream{first};
  }
  for (int i = 2; i <= count; ++i) {
    filesystem::copy_file(first, directory / ("im" + std::to_string(i) + ".jpg"),
                          filesystem::copy_options::overwrite_existing);
  }
  std::ofstream(directory / "complete");
  return directory;
}
