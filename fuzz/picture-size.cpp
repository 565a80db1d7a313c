#include "fuzz/picture-size.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include <FreeImage.h>

namespace {

using TSize = std::pair<std::uint32_t, std::uint32_t>;

/// A number of `count` bytes, 0 behind the end.
std::uint32_t NumberAt(std::string_view bytes, std::size_t position, int count, bool bigEndian) {
  std::uint32_t number = 0;
  for (int i = 0; i < count; ++i) {
    const std::size_t place = position + static_cast<std::size_t>(bigEndian ? i : count - 1 - i);
    number = number << 8 | (place < bytes.size() ? static_cast<std::uint8_t>(bytes[place]) : 0U);
  }
  return number;
}

TSize Larger(const TSize& a, const TSize& b) {
  return {std::max(a.first, b.first), std::max(a.second, b.second)};
}

/// The screen, and whatever might be the descriptor of a frame: FreeImage has no way to leave out the pixels.
TSize GifSize(std::string_view bytes) {
  TSize size = {NumberAt(bytes, 6, 2, false), NumberAt(bytes, 8, 2, false)};
  for (std::size_t i = bytes.find(','); i != std::string_view::npos; i = bytes.find(',', i + 1)) {
    if (i >= 13 && bytes.size() - i > 10) {
      size = Larger(size, {NumberAt(bytes, i + 5, 2, false), NumberAt(bytes, i + 7, 2, false)});
      // The first frame is the only one that is read.
      break;
    }
  }
  return size;
}

/// Every codestream's marker segment SIZ: the same.
TSize Jpeg2000Size(std::string_view bytes) {
  constexpr std::string_view kStart("\xFF\x4F\xFF\x51", 4);
  TSize size;
  for (std::size_t i = bytes.find(kStart); i != std::string_view::npos; i = bytes.find(kStart, i + 1)) {
    size = Larger(size, {NumberAt(bytes, i + 8, 4, true), NumberAt(bytes, i + 12, 4, true)});
  }
  return size;
}

}  // namespace

std::pair<std::uint32_t, std::uint32_t> PictureSize(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::unique_ptr<FIMEMORY, decltype(&FreeImage_CloseMemory)> memory(
      FreeImage_OpenMemory(const_cast<BYTE*>(data), static_cast<DWORD>(size)), FreeImage_CloseMemory);
  const FREE_IMAGE_FORMAT format = FreeImage_GetFileTypeFromMemory(memory.get(), 0);
  switch (format) {
    case FIF_GIF:
      return GifSize(bytes);
    case FIF_J2K:
    case FIF_JP2:
      return Jpeg2000Size(bytes);
    case FIF_JPEG:
    case FIF_PNG:
    case FIF_BMP:
    case FIF_TIFF:
    case FIF_WEBP:
    case FIF_PBM:
    case FIF_PBMRAW:
    case FIF_PGM:
    case FIF_PGMRAW:
    case FIF_PPM:
    case FIF_PPMRAW: {
      const std::unique_ptr<FIBITMAP, decltype(&FreeImage_Unload)> header(
          FreeImage_LoadFromMemory(format, memory.get(), FIF_LOAD_NOPIXELS), FreeImage_Unload);
      return {FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get())};
    }
    default:
      return {};
  }
}
