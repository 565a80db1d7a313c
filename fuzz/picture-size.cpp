#include "fuzz/picture-size.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>

#include <FreeImage.h>

#include "images/side-data.h"

namespace {

constexpr std::array kFormats = {FIF_JPEG,   FIF_PNG, FIF_WEBP,   FIF_GIF, FIF_BMP,   FIF_PBM,
                                 FIF_PBMRAW, FIF_PGM, FIF_PGMRAW, FIF_PPM, FIF_PPMRAW};

using TSize = std::pair<std::uint32_t, std::uint32_t>;

/// A number of two bytes, the lower one first; 0 behind the end.
std::uint32_t NumberAt(std::string_view bytes, std::size_t position) {
  const auto byte = [&](std::size_t place) {
    return place < bytes.size() ? std::uint32_t{static_cast<std::uint8_t>(bytes[place])} : 0U;
  };
  return byte(position) | byte(position + 1) << 8;
}

TSize Larger(const TSize& a, const TSize& b) {
  return {std::max(a.first, b.first), std::max(a.second, b.second)};
}

/// The screen and the first frame, the only one that is read: FreeImage has no way to leave out the pixels.
TSize GifSize(std::string_view bytes) {
  const auto byte = [&](std::size_t place) { return NumberAt(bytes, place) & 0xFF; };
  const std::uint32_t flags = byte(10);
  std::size_t place = 13 + ((flags & 0x80) != 0 ? std::size_t{6} << (flags & 7) : 0);
  // An extension is its mark, its kind, and blocks behind their lengths, of which the last is empty.
  while (place < bytes.size() && byte(place) == '!') {
    for (place += 2; place < bytes.size() && byte(place) != 0;) {
      place += 1 + byte(place);
    }
    ++place;
  }
  return Larger({NumberAt(bytes, 6), NumberAt(bytes, 8)}, {NumberAt(bytes, place + 5), NumberAt(bytes, place + 7)});
}

/// Hides what may claim sizes of its own, as the program does.
void HideSideData(FREE_IMAGE_FORMAT format, std::string& bytes) {
  const auto find = format == FIF_JPEG   ? &FindJpegSideData
                    : format == FIF_PNG  ? &FindPngSideData
                    : format == FIF_WEBP ? &FindWebPSideData
                                         : nullptr;
  if (find == nullptr) {
    return;
  }
  const TSideData found = find([&](std::int64_t position, unsigned char* block, std::size_t count) -> std::size_t {
    const auto begin = static_cast<std::size_t>(position);
    return begin < bytes.size() ? bytes.copy(reinterpret_cast<char*>(block), count, begin) : 0;
  });
  for (const std::int64_t key : found.keys) {
    bytes[static_cast<std::size_t>(key)] = 0;
  }
}

}  // namespace

std::pair<std::uint32_t, std::uint32_t> PictureSize(const std::uint8_t* data, std::size_t size) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::unique_ptr<FIMEMORY, decltype(&FreeImage_CloseMemory)> memory(
      FreeImage_OpenMemory(reinterpret_cast<BYTE*>(bytes.data()), static_cast<DWORD>(size)), FreeImage_CloseMemory);
  const auto* const format = std::find_if(kFormats.begin(), kFormats.end(), [&](FREE_IMAGE_FORMAT each) {
    return FreeImage_ValidateFromMemory(each, memory.get()) != FALSE;
  });
  if (format == kFormats.end()) {
    return {};
  }
  if (*format == FIF_GIF) {
    return GifSize(bytes);
  }
  HideSideData(*format, bytes);
  FreeImage_SeekMemory(memory.get(), 0, SEEK_SET);
  const std::unique_ptr<FIBITMAP, decltype(&FreeImage_Unload)> header(
      FreeImage_LoadFromMemory(*format, memory.get(), FIF_LOAD_NOPIXELS), FreeImage_Unload);
  return {FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get())};
}
