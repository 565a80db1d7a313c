#include "segmentation/segment-layout.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

std::vector<int> Rect(const TImageSegmentList& segments, std::size_t position) {
  const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segments.at(position));
  return {rect.GetX(), rect.GetY(), rect.GetWidth(), rect.GetHeight()};
}

using TRect = std::vector<int>;

TEST(AppendGridCells, CoversThePictureRowByRow) {
  TImageSegmentList cells;
  AppendGridCells(640, 480, cells);
  ASSERT_EQ(cells.size(), 64u);
  EXPECT_EQ(Rect(cells, 0), (TRect{0, 0, 80, 60}));
  EXPECT_EQ(Rect(cells, 9), (TRect{80, 60, 80, 60}));
  EXPECT_EQ(Rect(cells, 63), (TRect{560, 420, 80, 60}));
}

TEST(AppendGridCells, GivesNarrowPicturesEmptyColumns) {
  TImageSegmentList cells;
  AppendGridCells(5, 16, cells);
  const std::vector<int> edges = {0, 0, 1, 1, 2, 3, 3, 4};
  const std::vector<int> widths = {0, 1, 0, 1, 1, 0, 1, 1};
  for (std::size_t column = 0; column < 8; ++column) {
    EXPECT_EQ(Rect(cells, column), (TRect{edges[column], 0, widths[column], 2}));
  }
  TImageSegmentList none;
  AppendGridCells(0, 0, none);
  ASSERT_EQ(none.size(), 64u);
  EXPECT_EQ(Rect(none, 63), (TRect{0, 0, 0, 0}));
}

TEST(AppendKeypointSquare, LiesInsideThePicture) {
  struct TCase {
    TInterestPoint point;
    int width;
    int height;
    TRect square;
  };
  const std::vector<TCase> cases = {{{100, 100}, 640, 480, {85, 85, 30, 30}},   {{3, 3}, 640, 480, {0, 0, 30, 30}},
                                    {{639, 479}, 640, 480, {610, 450, 30, 30}}, {{15, 16}, 640, 480, {0, 1, 30, 30}},
                                    {{29, 29}, 30, 30, {0, 0, 30, 30}},         {{10, 100}, 20, 480, {0, 85, 20, 30}},
                                    {{100, 28}, 4000, 29, {85, 0, 30, 29}},     {{3, 5}, 10, 12, {0, 0, 10, 12}}};
  for (const TCase& each : cases) {
    TImageSegmentList squares;
    AppendKeypointSquare(each.point, each.width, each.height, squares);
    EXPECT_EQ(Rect(squares, 0), each.square) << each.point.x << ", " << each.point.y;
  }
}

}  // namespace
