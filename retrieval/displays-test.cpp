#include <cmath>
#include <numbers>

#include <QDialog>
#include <gtest/gtest.h>

#include "gui/picture-view.h"
#include "tests/support/workbench.h"

namespace {

constexpr QRgb kRed = qRgb(255, 0, 0);
constexpr QRgb kGreen = qRgb(0, 255, 0);
constexpr QRgb kBlue = qRgb(0, 0, 255);

/// The color in the middle of each tile of a grid, "." for an empty one.
std::string TileColors(const QImage& grid) {
  const QRgb background = grid.pixel(5, 5);
  std::string colors;
  for (const int y : {10, 160, 310, 450}) {
    for (const int x : {10, 180, 350, 520}) {
      const QRgb color = grid.pixel(x + 80, y + 60);
      colors += color == kRed ? 'r' : color == kGreen ? 'g' : color == kBlue ? 'b' : color == background ? '.' : '?';
    }
  }
  return colors;
}

/// The items of the pictures of a dialog, and its name for those who do not see it.
struct TShown {
  std::string name;
  std::vector<TPictureItem> items;
};

TShown ShowItems(TWorkbench& workbench, const std::string& line) {
  TShown shown;
  const TDialogRunnerScope scope([&](QDialog& dialog) {
    shown.name = dialog.accessibleName().toStdString();
    for (const TPictureView* view : dialog.findChildren<TPictureView*>()) {
      shown.items.insert(shown.items.end(), view->GetItems().begin(), view->GetItems().end());
    }
  });
  workbench.Run(line);
  return shown;
}

TEST(TFunctionDisplayImage, TellsOfFileTagsAndSegments) {
  TWorkbench workbench;
  MakePicture("a.png", 80, 40, kRed);
  workbench.Run("a = loadimage(\"a.png\")");
  TShown shown = ShowItems(workbench, "displayimage(a)");
  EXPECT_EQ(shown.name, "Image 'a', file 'a.png'");
  ASSERT_EQ(shown.items.size(), 1u);
  EXPECT_TRUE(shown.items[0].place.isNull()) << "the whole picture";
  EXPECT_EQ(shown.items[0].text, "a.png");
  workbench.Run("segmentimage(a, \"grid\")");
  shown = ShowItems(workbench, "displayimage(a)");
  ASSERT_EQ(shown.items.size(), 65u);
  // A grid of 8 x 8; which direction comes first is the method's affair.
  EXPECT_EQ(shown.items[1].place, QRect(0, 0, 10, 5));
  EXPECT_EQ(shown.items[1].text, "a.png\nNo label\nx 0, y 0, 10 x 5 pixels");
  EXPECT_EQ(shown.items[64].text, "a.png\nNo label\nx 70, y 35, 10 x 5 pixels");
}

TEST(TFunctionDisplayImage, FitsTheDialogAroundThePicture) {
  TWorkbench workbench;
  MakePicture("a.png", 100, 100, kRed);
  MakeFile("text.png", "no picture");
  workbench.Run("a = loadimage(\"a.png\")");
  workbench.Run("displayimage(a)");
  workbench.Run("a = loadimage(\"text.png\")");
  workbench.Run("displayimage(a)");
  ASSERT_EQ(workbench.dialogs.size(), 2u);
  const QImage& dialog = workbench.dialogs[0];
  EXPECT_EQ(dialog.size(), QSize(120, 150));
  EXPECT_EQ(dialog.pixel(10, 10), kRed);
  EXPECT_EQ(dialog.pixel(109, 109), kRed);
  EXPECT_NE(dialog.pixel(9, 9), kRed);
  EXPECT_NE(dialog.pixel(110, 110), kRed);
  EXPECT_EQ(workbench.dialogs[1].size(), QSize(20, 50));
}

TEST(TFunctionDisplayImage, OutlinesTheSegments) {
  TWorkbench workbench;
  MakePicture("a.png", 80, 80, kRed);
  workbench.Run("a = loadimage(\"a.png\")");
  workbench.Run("segmentimage(a, \"grid\")");
  EXPECT_EQ(workbench.GetColumn(2),
            std::vector<std::string>{"Filename: \"a.png\", no features, 64 segments without features"});
  workbench.Run("displayimage(a)");
  const QImage& dialog = workbench.dialogs.at(0);
  for (int y = 0; y < 80; ++y) {
    for (int x = 0; x < 80; ++x) {
      const QColor color = dialog.pixelColor(10 + x, 10 + y);
      if (x % 10 == 0 || x % 10 == 9 || y % 10 == 0 || y % 10 == 9) {
        // Half of the red, and half of the gray 128; the toolkit rounds.
        ASSERT_NEAR(color.red(), 127 + 64, 2) << x << ", " << y;
        ASSERT_NEAR(color.green(), 64, 2) << x << ", " << y;
      } else {
        ASSERT_EQ(color, QColor(kRed)) << x << ", " << y;
      }
    }
  }
}

class TIndexDisplays : public testing::Test {
 protected:
  /// A database of `count` pictures, all green but the first, and a query of the same green.
  void Search(int count) {
    for (int i = 1; i <= count; ++i) {
      MakePicture("db/im" + std::to_string(i) + ".jpg", 160, 120, i == 1 ? kRed : kGreen);
    }
    MakePicture("query.png", 160, 120, kBlue);
    workbench.Run("q = loadimage(\"query.png\")");
    workbench.Run("db = loaddatabase(\"db\")");
    workbench.Run("updatefeature(db, \"hsv\")");
    // The query looks green only as long as its feature is computed.
    MakePicture("query.png", 160, 120, kGreen);
    workbench.Run("updatefeature(q, \"hsv\")");
    MakePicture("query.png", 160, 120, kBlue);
    ASSERT_EQ(workbench.Run("index = searchimage(db, q)"), "Matching with features: hsv\n");
  }

  QImage Show(const std::string& line, const std::string& answer = std::string()) {
    EXPECT_EQ(workbench.Run(line), answer) << line;
    return workbench.dialogs.empty() ? QImage() : workbench.dialogs.back();
  }

  TWorkbench workbench;
};

TEST_F(TIndexDisplays, TheGridShowsTheQueryFirstUnlessToldNotTo) {
  Search(20);
  const QImage grid = Show("displayindex(index)");
  EXPECT_EQ(grid.size(), QSize(687, 621));
  EXPECT_EQ(TileColors(grid), "bggggggggggggggg");
  EXPECT_EQ(TileColors(Show("displayindex(index, true)")), "bggggggggggggggg");
  EXPECT_EQ(TileColors(Show("displayindex(index, false)")), "gggggggggggggggg");
}

TEST_F(TIndexDisplays, AShortRankingLeavesTilesEmptyAndUnreadableFilesTheirs) {
  Search(3);
  EXPECT_EQ(TileColors(Show("displayindex(index)")), "bggr............");
  EXPECT_EQ(TileColors(Show("displayindex(index, false)")), "ggr.............");
  MakeFile("db/im2.jpg", "no picture any more");
  const std::string unreadable = "File 'db/im2.jpg' cannot be read\n";
  EXPECT_EQ(TileColors(Show("displayindex(index)", unreadable)), "b.gr............");
  EXPECT_EQ(Show("displayindexmap(index)", unreadable).size(), QSize(820, 850));
}

TEST_F(TIndexDisplays, TheMapTellsOfUnreadableFilesFromTheLastRankToTheQuery) {
  Search(15);
  // All but the first are at the same distance, so that the ranks are im2 to im15, im1.
  std::string lines;
  for (int i = 1; i <= 15; ++i) {
    MakeFile("db/im" + std::to_string(i) + ".jpg", "no picture any more");
  }
  MakeFile("query.png", "nor this one");
  for (const int i : {1, 15, 14, 13, 12, 11, 10, 9, 8, 7}) {
    lines += "File 'db/im" + std::to_string(i) + ".jpg' cannot be read\n";
  }
  Show("displayindexmap(index)", lines + "6 more files cannot be read\n");
  // Whoever shows no dialogs looks at the files all the same, though not at their pixels.
  const TDialogRunnerScope scope((TDialogRunner()));
  EXPECT_EQ(workbench.Run("displayindexmap(index)"), lines + "6 more files cannot be read\n");
  EXPECT_EQ(workbench.Run("displayimage(q)"), "File 'query.png' cannot be read\n");
}

TEST_F(TIndexDisplays, TilesTellOfRankFileDistanceAndTags) {
  Search(3);
  MakeFile("sky.txt", "2\r\n");
  workbench.Run("loadmirflickrtags(db, \"sky.txt\")");
  const TShown grid = ShowItems(workbench, "displayindex(index)");
  EXPECT_EQ(grid.name, "Ranking 'index', query 'query.png'");
  ASSERT_EQ(grid.items.size(), 4u);
  EXPECT_EQ(grid.items[0].text, "Query\nquery.png");
  EXPECT_EQ(grid.items[1].text, "Rank 1\ndb/im2.jpg\nDistance 0\nTags: sky");
  EXPECT_EQ(grid.items[2].text, "Rank 2\ndb/im3.jpg\nDistance 0");
  EXPECT_EQ(grid.items[2].filename, "db/im3.jpg");
  EXPECT_TRUE(grid.items[3].text.starts_with("Rank 3\ndb/im1.jpg\nDistance "));

  const TShown map = ShowItems(workbench, "displayindexmap(index, false)");
  ASSERT_EQ(map.items.size(), 3u);
  EXPECT_EQ(map.items[2].place, QRect(340, 355, 120, 90)) << "the best in the middle, on top of all";
  EXPECT_EQ(map.items[2].text, grid.items[1].text);
  EXPECT_EQ(map.items[0].text, grid.items[3].text);
}

TEST_F(TIndexDisplays, TheMapPutsTheBestResultInTheMiddle) {
  Search(1);
  const QImage map = Show("displayindexmap(index, false)");
  ASSERT_EQ(map.size(), QSize(820, 850));
  // The canvas begins at 10, 10; a picture of 160 x 120 becomes a tile of 120 x 90 around the middle.
  const auto at = [&](int x, int y) { return map.pixel(10 + x, 10 + y); };
  EXPECT_EQ(at(340, 355), kRed);
  EXPECT_EQ(at(459, 444), kRed);
  for (const auto& [x, y] : {std::pair(339, 400), {460, 400}, {400, 354}, {400, 445}}) {
    EXPECT_EQ(at(x, y), qRgb(0, 0, 0)) << x << ", " << y;
  }
}

TEST_F(TIndexDisplays, TheMapPutsWeakerResultsFurtherOutAndTheQueryOneStepBeyondTheMiddle) {
  Search(2);
  std::srand(7);
  const int worstAngle = std::rand() % 360;
  std::rand();  // The best result lies in the middle whatever its angle.
  const int queryAngle = std::rand() % 360;
  std::srand(7);
  const QImage map = Show("displayindexmap(index)");
  const auto center = [](int angle, double distance) {
    const double radians = angle * std::numbers::pi / 180.0;
    return QPoint(10 + static_cast<int>(400 + std::cos(radians) * distance),
                  10 + static_cast<int>(400 - std::sin(radians) * distance));
  };
  // Of two results the worst lies at 400 x 1 / 2 and the query at -400 / 2, each in its own direction.
  EXPECT_EQ(map.pixel(center(queryAngle, -200)), kBlue);
  EXPECT_EQ(map.pixel(center(worstAngle, 200)), kRed);
  EXPECT_EQ(map.pixel(410, 410), kGreen);
}

TEST_F(TIndexDisplays, TheMapShowsTheBestForty) {
  Search(45);
  const QImage map = Show("displayindexmap(index, false)");
  for (int y = 10; y < 810; ++y) {
    for (int x = 10; x < 810; ++x) {
      ASSERT_NE(map.pixel(x, y), kRed) << "the red picture is the worst of 45";
    }
  }
}

}  // namespace
