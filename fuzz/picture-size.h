#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

/// The largest width and height that a file in memory speaks of, as far as its beginning tells without decoding: 0 and
/// 0 for what is no JPEG, PNG, WebP, GIF, BMP or PNM.
std::pair<std::uint32_t, std::uint32_t> PictureSize(const std::uint8_t* data, std::size_t size);
