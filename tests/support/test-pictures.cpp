#include "tests/support/test-pictures.h"

#include "tests/support/scratch-directory.h"

std::string PictureBytes(int width, int height, const std::function<TColor(int x, int y)>& color) {
  // A portable pixmap: a line of text, then the pixels, top row and red first.
  std::string bytes = "P6 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (const unsigned char channel : color(x, y)) {
        bytes += static_cast<char>(channel);
      }
    }
  }
  return bytes;
}

void MakePicture(const std::filesystem::path& path, int width, int height,
                 const std::function<TColor(int x, int y)>& color) {
  MakeFile(path, PictureBytes(width, height, color));
}

void MakePicture(const std::filesystem::path& path, int width, int height, std::uint32_t color) {
  const auto channel = [color](int shift) { return static_cast<unsigned char>(color >> shift); };
  MakePicture(path, width, height, [&](int, int) { return TColor{channel(16), channel(8), channel(0)}; });
}
