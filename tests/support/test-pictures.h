#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

/// Red, green and blue of one pixel.
using TColor = std::array<unsigned char, 3>;

/// The bytes of an uncompressed image file with the given pixels. It decodes to exactly these, whatever its name.
std::string PictureBytes(int width, int height, const std::function<TColor(int x, int y)>& color);

/// Writes such a file below the working directory.
void MakePicture(const std::filesystem::path& path, int width, int height,
                 const std::function<TColor(int x, int y)>& color);

/// Writes one of a single color, as qRgb makes it: blue in the lowest byte, then green, then red.
void MakePicture(const std::filesystem::path& path, int width, int height, std::uint32_t color);
