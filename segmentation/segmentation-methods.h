#pragma once

#include <string_view>

/// The names of the segmentation methods, as they are typed and listed: an even grid of cells, and squares around the
/// keypoints of SIFT.
inline constexpr std::string_view kGridMethod = "grid";
inline constexpr std::string_view kSiftMethod = "sift";
