#pragma once

#include <cstdint>
#include <vector>

#include "embedding-settings.h"

/// The input of the network for one picture: 3 planes of height * width floats, row by row, in the order of the
/// settings' channels. The picture has bytes red, green, blue, rows `stride` bytes apart, and is not empty.
///
/// Resizing is bilinear and, where it shrinks, antialiased: the triangle is as wide as a pixel of the result. Columns
/// are resized first, and both steps round to bytes, as the libraries do that most networks are trained with.
std::vector<float> PictureToTensor(const unsigned char* pixels, std::int32_t width, std::int32_t height,
                                   std::int32_t stride, const TEmbeddingSettings& settings);
