#include "segmentation/segment-layout.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace {

// Cells on each side, whatever the size of the picture.
constexpr int kGridSize = 8;
constexpr std::size_t kCellCount = std::size_t{kGridSize} * kGridSize;
// Pixels, whatever the scale of the keypoint.
constexpr int kSquareSize = 30;

void AppendRect(int x, int y, int width, int height, TImageSegmentList& segments) {
  auto segment = std::make_unique<TImageSegmentRect>();
  segment->SetX(x);
  segment->SetY(y);
  segment->SetWidth(width);
  segment->SetHeight(height);
  segments.push_back(std::move(segment));
}

/// Where the cell of that number begins on a side of `size` pixels.
int GridEdge(int size, int number) {
  // Each edge is worked out from the whole side, so that the cells cover the picture without gap or overlap and differ
  // by one pixel at most.
  return static_cast<int>(static_cast<std::int64_t>(size) * number / kGridSize);
}

/// The lower edge of a square around `position` on a side of `size` pixels.
int SquareEdge(int position, int size) {
  // Shifted and not cut: all squares have the same size, so that features over them are comparable. The last max is for
  // pictures smaller than the square.
  return std::max(std::min(std::max(position - kSquareSize / 2, 0), size - kSquareSize), 0);
}

}  // namespace

void AppendGridCells(int width, int height, TImageSegmentList& segments) {
  // Row by row, which is the order of all tables of segments. A picture without pixels has 64 empty cells.
  segments.reserve(segments.size() + kCellCount);
  for (int row = 0; row < kGridSize; ++row) {
    const int y = GridEdge(height, row);
    for (int column = 0; column < kGridSize; ++column) {
      const int x = GridEdge(width, column);
      AppendRect(x, y, GridEdge(width, column + 1) - x, GridEdge(height, row + 1) - y, segments);
    }
  }
}

void AppendKeypointSquare(const TInterestPoint& point, int width, int height, TImageSegmentList& segments) {
  AppendRect(SquareEdge(point.x, width), SquareEdge(point.y, height), std::min(kSquareSize, width),
             std::min(kSquareSize, height), segments);
}
