// Ground truth, evaluation and stored features, through command lines and with the real gnuplot.

#include <algorithm>
#include <bit>
#include <filesystem>
#include <limits>
#include <memory>

#include <QTableWidget>
#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "tests/support/ordinary-user.h"
#include "tests/support/workbench.h"

namespace {

constexpr QRgb kRed = qRgb(255, 0, 0);
constexpr QRgb kGreen = qRgb(0, 255, 0);

class TEvaluation : public testing::Test {
 protected:
  TEvaluation() {
    for (int i = 1; i <= 4; ++i) {
      MakePicture("photos/im" + std::to_string(i) + ".jpg", 8, 8, i % 2 == 1 ? kGreen : kRed);
    }
    MakePicture("query.png", 8, 8, kGreen);
    workbench.Run("db = loaddatabase(\"photos\")");
  }

  void Search() {
    workbench.Run("q = loadimage(\"query.png\")");
    workbench.Run("updatefeature(db, \"hsv\")");
    workbench.Run("updatefeature(q, \"hsv\")");
    ASSERT_EQ(workbench.Run("index = searchimage(db, q)"), "Matching with features: hsv\n");
  }

  /// A stored vector of 256 numbers, all alike.
  static std::string Doubles(double number) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
      bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    return bytes;
  }

  const TVarDatabase& Database(const std::string& name = "db") {
    return dynamic_cast<const TVarDatabase&>(*workbench.controller.GetVarList().Find(name));
  }

  /// The tags of each image, joined, images separated by "|".
  std::string Tags() {
    std::string tags;
    for (const auto& image : Database().GetImages()) {
      for (const std::string& tag : image->GetTags()) {
        tags += tag + ' ';
      }
      tags += '|';
    }
    return tags;
  }

  TWorkbench workbench;
};

TEST_F(TEvaluation, AnnotationFilesTagByPosition) {
  std::filesystem::create_directory("tags");
  struct TAnnotations {
    const char* name;
    std::string text;
    std::string answer;
  };
  const std::string none = "No image was tagged\n";
  const std::vector<TAnnotations> files = {
      {"Tree.txt", "1\r\n3\r\n", ""},
      {"a.b.txt", "4\r\n", ""},
      {"empty.txt", "", none},
      {"far.txt", "5\r\n6\r\n", "2 lines name no image\n" + none},
      {"odd.txt", "0\r\n-1\r\n5\r\n99999999999999999999\r\nx\r\n\r\n 2x\r\n", "6 lines name no image\n"},
      {"last.txt", "1\r\n2", "The last line of 'tags\\last.txt' has no line end and is not read\n"},
      {"unix.txt", "10\n20\n",
       "File 'tags\\unix.txt' has line ends without carriage return: the last character of such a line is lost\n"},
      {"both.txt", "\n9",
       "File 'tags\\both.txt' has line ends without carriage return: the last character of such a line is lost\n"
       "The last line of 'tags\\both.txt' has no line end and is not read\n1 lines name no image\n" +
           none},
      {"zero.txt",
       std::string("1\r\n\0"
                   "2\n3\0",
                   8),
       ""}};
  for (const auto& [name, text, answer] : files) {
    MakeFile(std::string("tags/") + name, text);
    EXPECT_EQ(workbench.Run(std::string("loadmirflickrtags(db, \"tags\\") + name + "\")"), answer) << name;
  }
  EXPECT_EQ(Tags(), "tree last unix zero |odd unix |tree |a |");
  EXPECT_EQ(workbench.Run("LoadMirFlickrTags(db, \"TAGS/tree.TXT\")"), "") << "tagged before is tagged";
  EXPECT_EQ(Tags(), "tree last unix zero tree |odd unix |tree tree |a |");
  EXPECT_EQ(workbench.Run("loadmirflickrtags(db, \"none.txt\")"), "File not found\nFunction failed\n");
  EXPECT_EQ(workbench.Run("loadmirflickrtags(db, \"tags\")"), "File not found\nFunction failed\n");
  workbench.Run("q = loadimage(\"query.png\")");
  EXPECT_EQ(workbench.Run("loadmirflickrtags(q, \"none.txt\")"),
            "First parameter is not of type 'database'\nFunction failed\n");
}

TEST_F(TEvaluation, WritesTheCurveAndShowsTheChartOfGnuplot) {
  MakeFile("tree.txt", "1\r\n4\r\n1\r\n");
  workbench.Run("loadmirflickrtags(db, \"tree.txt\")");
  Search();
  // The ranking is 1, 3 (green), 2, 4 (red): hits at ranks 1 and 4, precisions 1 and 1/2.
  EXPECT_EQ(workbench.Run("EvaluateIndex(index, \"TREE\")"), "MAP: 0.37500000\n");
  EXPECT_EQ(FileBytes("recallprecision.txt"),
            "0.50000000 1.00000000\r\n0.50000000 0.50000000\r\n0.50000000 0.33333333\r\n1.00000000 0.50000000\r\n");
  EXPECT_EQ(FileBytes("recallprecision.plt"),
            "set title \"Recall/precision\"\r\nset xlabel \"Recall\"\r\nset ylabel \"Precision\"\r\n"
            "file = \"recallprecision.txt\"\r\nset terminal png size 1024,768\r\n"
            "set output \"recallprecision.png\"\r\nplot file using 1:2 title \"tree\" with lines\r\n");
  ASSERT_EQ(workbench.dialogs.size(), 1u);
  EXPECT_EQ(workbench.dialogs[0].size(), QSize(1044, 818));
  // The corner of gnuplot's paper, and somewhere a line that is neither paper nor ink.
  EXPECT_EQ(workbench.dialogs[0].pixel(12, 12), qRgb(255, 255, 255));
  int colored = 0;
  for (int y = 10; y < 778; ++y) {
    for (int x = 10; x < 1034; ++x) {
      const QColor color = workbench.dialogs[0].pixelColor(x, y);
      colored += color.saturation() > 128 ? 1 : 0;
    }
  }
  EXPECT_GT(colored, 500);
}

TEST_F(TEvaluation, NoChartOfAnEarlierEvaluationIsEverShown) {
  MakeFile("tree.txt", "1\r\n");
  workbench.Run("loadmirflickrtags(db, \"tree.txt\")");
  Search();
  const auto restore = [](const QByteArray* path) { qputenv("PATH", *path); };
  const QByteArray path = qgetenv("PATH");
  const std::unique_ptr<const QByteArray, decltype(restore)> atEnd(&path, restore);
  qputenv("PATH", "/none");
  const std::string notDrawn = "Chart 'recallprecision.png' was not drawn: is gnuplot installed?\n";
  MakePicture("recallprecision.png", 8, 8, kRed);
  MakePicture("RecallPrecision.PNG", 8, 8, kRed);
  EXPECT_EQ(workbench.Run("evaluateindex(index, \"tree\")"), "MAP: 0.25000000\n" + notDrawn);
  EXPECT_FALSE(std::filesystem::exists("recallprecision.png"));
  std::filesystem::create_directory("recallprecision.png");
  EXPECT_EQ(workbench.Run("evaluateindex(index, \"tree\")"), "MAP: 0.25000000\n" + notDrawn);
  std::filesystem::remove("recallprecision.png");
  MakePicture("recallprecision.png", 8, 8, kRed);
  EXPECT_EQ(workbench.Run("evaluateindex(index, \"bush\")"), "No image carries the tag 'bush'\nMAP: 0.00000000\n");
  EXPECT_TRUE(FileBytes("recallprecision.txt").starts_with("nan 0.00000000\r\n"));
  EXPECT_NE(FileBytes("recallprecision.plt").find("title \"bush\" with"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists("recallprecision.png"));
  EXPECT_TRUE(workbench.dialogs.empty());
  EXPECT_EQ(workbench.controller.GetFailedLines(), 0);
}

TEST_F(TEvaluation, ATagThatGnuplotWouldRunIsNotDrawn) {
  Search();
  const std::vector<std::pair<std::string, std::string>> tags = {
      {"tree\\", "tree\\"}, {"`touch ran`", "`touch ran`"}, {"\"; system \"touch ran", "\";system\"touch ran"}};
  for (const auto& [typed, tag] : tags) {
    EXPECT_EQ(workbench.Run("evaluateindex(index, \"" + typed + "\")"),
              "No image carries the tag '" + tag + "'\nMAP: 0.00000000\nTag cannot be drawn\n");
  }
  MakeFile("`touch ran`.txt", "1\r\n");
  workbench.Run("loadmirflickrtags(db, \"`touch ran`.txt\")");
  EXPECT_EQ(workbench.Run("evaluateindex(index, \"`touch ran`\")"), "MAP: 0.25000000\nTag cannot be drawn\n");
  workbench.Run("evaluateindex(index, \"\"; system \"touch ran\")");
  EXPECT_TRUE(FileBytes("recallprecision.txt").starts_with("nan 0.00000000\r\n"));
  EXPECT_NE(FileBytes("recallprecision.plt").find("title \"\";system\"touch ran\" with"), std::string::npos);
  EXPECT_TRUE(workbench.dialogs.empty());
  EXPECT_FALSE(std::filesystem::exists("ran"));
}

TEST_F(TEvaluation, RefusesWhatDoesNotFitAndTouchesNoFile) {
  Search();
  EXPECT_EQ(workbench.Run("evaluateindex(db, \"x\")"),
            "First parameter is not of type 'databaseindex'\nFunction failed\n");
  workbench.Run("copy = index");
  MakePicture("photos/im5.jpg", 8, 8, kGreen);
  workbench.Run("db = loaddatabase(\"photos\")");
  EXPECT_EQ(workbench.Run("evaluateindex(copy, \"x\")"), "Index does not match database 'db'\nFunction failed\n");
  // As many pictures as before, but others; then the same again, written in other ways.
  std::filesystem::rename("photos/im5.jpg", "photos/im9.jpg");
  std::filesystem::rename("photos/im4.jpg", "spare.jpg");
  workbench.Run("db = loaddatabase(\"photos\")");
  const std::string mismatch = "Index does not match database 'db'\nFunction failed\n";
  for (const char* command : {"evaluateindex(copy, \"x\")", "displayindex(copy)", "displayindexmap(copy)"}) {
    EXPECT_EQ(workbench.Run(command), mismatch);
  }
  std::filesystem::remove("photos/im9.jpg");
  std::filesystem::rename("spare.jpg", "photos/im4.jpg");
  workbench.Run("db = loaddatabase(\"./photos\")");
  EXPECT_EQ(workbench.Run("displayindex(copy)"), mismatch);
  workbench.Run("db = loaddatabase(\"photos/\")");
  EXPECT_EQ(workbench.Run("displayindex(copy)"), "");
  workbench.Run("b = db");
  workbench.Run("b = loaddatabase(\"./photos\")");
  workbench.Run("db = b");
  EXPECT_EQ(workbench.Run("displayindex(copy)"), mismatch) << "a copy has what it copied";
  workbench.Run("db = q");
  EXPECT_EQ(workbench.Run("evaluateindex(copy, \"x\")"), "Database 'db' not found\nFunction failed\n");
  EXPECT_FALSE(std::filesystem::exists("recallprecision.txt"));
}

TEST_F(TEvaluation, AFileThatCannotBeWrittenFailsAfterMap) {
  Search();
  std::filesystem::create_directory("recallprecision.plt");
  MakeFile("recallprecision.png", "earlier");
  EXPECT_EQ(workbench.Run("evaluateindex(index, \"x\")"),
            "No image carries the tag 'x'\nMAP: 0.00000000\n"
            "File 'recallprecision.plt' cannot be written\nFunction failed\n");
  EXPECT_EQ(FileBytes("recallprecision.png"), "earlier") << "only a new curve makes it wrong";
  std::filesystem::remove("recallprecision.txt");
  std::filesystem::create_directory("recallprecision.txt");
  EXPECT_EQ(workbench.Run("evaluateindex(index, \"x\")"),
            "No image carries the tag 'x'\nMAP: 0.00000000\n"
            "File 'recallprecision.txt' cannot be written\nFunction failed\n");
}

TEST_F(TEvaluation, SearchTagsPutsCarriersFirst) {
  MakeFile("tree.txt", "4\r\n2\r\n");
  workbench.Run("loadmirflickrtags(db, \"tree.txt\")");
  EXPECT_EQ(workbench.Run("index = searchtags(db, \"Tree\")"), "");
  workbench.Run("displayindex(index)");
  // Without a query the grid begins with the first result: the red images 2 and 4, then the green ones.
  const QImage& grid = workbench.dialogs.at(0);
  EXPECT_EQ(grid.pixel(90, 70), kRed);
  EXPECT_EQ(grid.pixel(260, 70), kRed);
  EXPECT_EQ(grid.pixel(430, 70), kGreen);
  EXPECT_EQ(workbench.Run("none = searchtags(db, \"bush\")"), "");
  EXPECT_EQ(workbench.Run("x = searchtags(index, \"tree\")"),
            "First parameter is not of type 'database'\nFunction failed\n");
  std::filesystem::create_directory("empty");
  workbench.Run("e = loaddatabase(\"empty\")");
  EXPECT_EQ(workbench.Run("x = searchtags(e, \"tree\")"), "Database does not contain images\nFunction failed\n");
}

TEST_F(TEvaluation, SavedFeaturesLoadBitForBit) {
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"), "Feature not found in database\nFunction failed\n");
  workbench.Run("updatefeature(db, \"hsv\")");
  double* numbers = Database().GetImages()[1]->GetImageSegment().GetFeatures().Find("hsv")->GetData();
  numbers[0] = -0.0;
  numbers[1] = std::numeric_limits<double>::quiet_NaN();
  numbers[2] = 0.1;
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"), "");
  const std::string bytes = FileBytes("FeatureStorage/hsv-im2.dat");
  ASSERT_EQ(bytes.size(), 2048u);
  // 0.1 is 3FB999999999999A.
  EXPECT_EQ(bytes.substr(16, 8), "\x9a\x99\x99\x99\x99\x99\xb9\x3f");
  EXPECT_EQ(workbench.Run("b = loaddatabase(\"photos\")"), "Scanning..\nDatabase contains 4 images\n");
  EXPECT_EQ(workbench.Run("loadfeature(b, \"hsv\")"), "Loading features..\nDone\n");
  const double* loaded = Database("b").GetImages()[1]->GetImageSegment().GetFeatures().Find("hsv")->GetData();
  for (int i = 0; i < 256; ++i) {
    ASSERT_EQ(std::bit_cast<std::uint64_t>(loaded[i]), std::bit_cast<std::uint64_t>(numbers[i])) << i;
  }
  EXPECT_EQ(workbench.GetColumn(2).back(), "Location: \"photos/\", number of images: 4, features: hsv");
}

TEST_F(TEvaluation, LoadingTakesNoFileOfAnotherLength) {
  workbench.Run("updatefeature(db, \"lbp\")");
  workbench.Run("updatefeature(db, \"hsv\")");
  MakeFile("FeatureStorage/hsv-im1.dat", std::string(2047, '\0'));
  MakeFile("FeatureStorage/hsv-im2.dat", "");
  std::filesystem::create_directory("FeatureStorage/hsv-im3.dat");
  MakeFile("FeatureStorage/hsv-im4.dat", "");
  std::filesystem::resize_file("FeatureStorage/hsv-im4.dat", std::uintmax_t{8} * ((1 << 24) + 1));
  EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"),
            "Loading features..\nFile 'FeatureStorage/hsv-im4.dat' is too large\n"
            "3 images without a stored feature\nDone\n");
  // Each has kept the vector that it had: all pixels are of one color, so that one bin holds all.
  for (const auto& image : Database().GetImages()) {
    const TFeatureVector& vector = *image->GetImageSegment().GetFeatures().Find("hsv");
    EXPECT_EQ(vector.GetLength(), 256U);
    EXPECT_EQ(std::count(vector.GetData(), vector.GetData() + 256, 1.0), 1);
  }
  for (const std::size_t size : {2040, 2049, 2056, 4096}) {
    MakeFile("FeatureStorage/lbp-im1.dat", std::string(size, '\0'));
    EXPECT_EQ(workbench.Run("loadfeature(db, \"lbp\")"),
              "Loading features..\n4 images without a stored feature\nDone\n")
        << size;
  }
  EXPECT_EQ(workbench.GetColumn(2).front(), "Location: \"photos/\", number of images: 4, features: lbp, hsv");
  EXPECT_EQ(workbench.Run("loadfeature(db, \"surf\")"), "Unknown feature\nFunction failed\n");
}

TEST_F(TEvaluation, StoredFeaturesKnowTheirPictures) {
  workbench.Run("updatefeature(db, \"hsv\")");
  workbench.Run("savefeature(db, \"hsv\")");
  const std::string sources = FileBytes("FeatureStorage/hsv.sources");
  EXPECT_EQ(std::count(sources.begin(), sources.end(), '\n'), 4);
  // A name, a path, and the size of the picture; behind it stands the time.
  EXPECT_TRUE(sources.starts_with("hsv-im1.dat\tphotos/im1.jpg\t" +
                                  std::to_string(std::filesystem::file_size("photos/im1.jpg")) + "\t"))
      << sources;
  const std::string begin = "Loading features..\n";
  EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"), begin + "Done\n");
  // Another collection with the same stems; a picture that changed in size, one in time, one that is gone.
  std::filesystem::copy("photos", "others");
  workbench.Run("o = loaddatabase(\"others\")");
  EXPECT_EQ(workbench.Run("loadfeature(o, \"hsv\")"), begin + "4 stored features come from other pictures\nDone\n");
  EXPECT_EQ(workbench.GetColumn(2).back(), "Location: \"others/\", number of images: 4, features: hsv");
  MakePicture("photos/im1.jpg", 80, 8, kRed);
  std::filesystem::last_write_time("photos/im2.jpg", std::filesystem::file_time_type::clock::now());
  std::filesystem::remove("photos/im3.jpg");
  std::filesystem::remove("FeatureStorage/hsv-im4.dat");
  EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"),
            begin + "2 stored features come from other pictures\n1 images without a stored feature\nDone\n");
  // The last one saved is the one that counts, and files that nothing is known of are nobody else's.
  workbench.Run("savefeature(o, \"hsv\")");
  EXPECT_EQ(workbench.Run("loadfeature(o, \"hsv\")"), begin + "Done\n");
  std::filesystem::remove("FeatureStorage/hsv.sources");
  EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"), begin + "Done\n");
  std::filesystem::create_directory("FeatureStorage/hsv.sources");
  EXPECT_EQ(workbench.Run("savefeature(o, \"hsv\")"),
            "File 'FeatureStorage/hsv.sources' cannot be written\nFunction failed\n");
}

TEST_F(TEvaluation, StoredFeaturesAreFoundWhateverTheCaseOfTheirNames) {
  MakeFile("FeatureStorage/HSV-Im1.dat", Doubles(1.0));
  MakeFile("FeatureStorage/hsv-IM1.dat", Doubles(2.0));
  MakeFile("FeatureStorage/HSV-IM2.dat", Doubles(3.0));
  MakeFile("FeatureStorage/hsv-im2.dat", Doubles(4.0));
  std::filesystem::create_directory("FeatureStorage/hsv-IM3.dat");
  MakeFile("FeatureStorage/hsv-im4.dat", Doubles(5.0));
  std::filesystem::permissions("FeatureStorage/hsv-im4.dat", std::filesystem::perms::none);
  {
    const TOrdinaryUser ordinaryUser;
    ASSERT_TRUE(ordinaryUser.isOrdinary);
    EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"),
              "Loading features..\nFile 'FeatureStorage/hsv-im4.dat' cannot be read\n"
              "1 images without a stored feature\nDone\n");
  }
  const auto first = [&](std::size_t image) {
    return Database().GetImages()[image]->GetImageSegment().GetFeatures().Find("hsv")->GetData()[0];
  };
  EXPECT_EQ(first(0), 1.0) << "the first in byte order";
  EXPECT_EQ(first(1), 4.0) << "the exact name";
}

TEST_F(TEvaluation, WhatIsKnownOfStoredFeaturesIsNotLostWhenItCannotBeRead) {
  workbench.Run("updatefeature(db, \"hsv\")");
  workbench.Run("savefeature(db, \"hsv\")");
  workbench.Run("loadfeature(db, \"hsv\")");
  EXPECT_FALSE(workbench.controller.HasLosses());
  const std::string file = "FeatureStorage/hsv.sources";
  const std::string sources = FileBytes(file);
  std::filesystem::permissions(file, std::filesystem::perms::none);
  {
    const TOrdinaryUser ordinaryUser;
    ASSERT_TRUE(ordinaryUser.isOrdinary);
    EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"),
              "Loading features..\nFile '" + file + "' cannot be read\nDone\n");
    EXPECT_TRUE(workbench.controller.HasLosses());
    EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"), "File '" + file + "' cannot be read\nFunction failed\n");
  }
  EXPECT_EQ(FileBytes(file), sources);
}

TEST_F(TEvaluation, SavingSkipsImagesWithoutTheFeatureAndKeepsGoodFilesWhole) {
  workbench.Run("updatefeature(db, \"hsv\")");
  Database().GetImages()[2]->GetImageSegment().GetFeatures().Remove("hsv");
  MakeFile("FeatureStorage/hsv-im1.dat", "earlier");
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"), "1 images without the feature skipped\n");
  EXPECT_EQ(FileBytes("FeatureStorage/hsv-im1.dat").size(), 2048u);
  EXPECT_FALSE(std::filesystem::exists("FeatureStorage/hsv-im3.dat"));
  std::filesystem::remove("FeatureStorage/hsv-im2.dat");
  std::filesystem::create_directory("FeatureStorage/hsv-im2.dat");
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"),
            "File 'FeatureStorage/hsv-im2.dat' cannot be written\nFunction failed\n");
  std::filesystem::remove_all("FeatureStorage");
  MakeFile("FeatureStorage", "a file");
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"),
            "File 'FeatureStorage/hsv-im1.dat' cannot be written\nFunction failed\n");
  EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"), "Loading features..\n4 images without a stored feature\nDone\n");
  for (const char* command : {"savefeature", "loadfeature"}) {
    workbench.Run("q = loadimage(\"query.png\")");
    EXPECT_EQ(workbench.Run(std::string(command) + "(q, \"hsv\")"),
              "First parameter is not of type 'database'\nFunction failed\n");
    std::filesystem::create_directory("none");
    workbench.Run("e = loaddatabase(\"none\")");
    EXPECT_EQ(workbench.Run(std::string(command) + "(e, \"hsv\")"), "No images in database\nFunction failed\n");
  }
}

TEST_F(TEvaluation, SavingLeavesOutWhatWasComputedWithoutAPicture) {
  workbench.Run("updatefeature(db, \"hsv\")");
  workbench.Run("savefeature(db, \"hsv\")");
  const std::string good = FileBytes("FeatureStorage/hsv-im2.dat");
  const std::string sources = FileBytes("FeatureStorage/hsv.sources");
  const std::string picture = FileBytes("photos/im2.jpg");
  MakeFile("photos/im2.jpg", "no picture");
  workbench.Run("updatefeature(db, \"hsv\")");
  // Neither a copy nor a segmentation nor another feature makes the vector better.
  for (const char* line : {"copy = db", "segmentimage(copy, \"grid\")"}) {
    workbench.Run(line);
  }
  const std::string left = "1 images that could not be read are not saved\n";
  EXPECT_EQ(workbench.Run("savefeature(copy, \"hsv\")"), left);
  EXPECT_EQ(FileBytes("FeatureStorage/hsv-im2.dat"), good);
  EXPECT_EQ(FileBytes("FeatureStorage/hsv.sources"), sources);
  MakeFile("photos/im2.jpg", picture);
  workbench.Run("updatefeature(db, \"lbp\")");
  EXPECT_EQ(workbench.Run("savefeature(db, \"lbp\")"), "");
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"), left) << "the picture is back, its vector is not";
  // Either of these makes it whole.
  workbench.Run("updatefeature(db, \"hsv\")");
  EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"), "");
  workbench.Run("loadfeature(copy, \"hsv\")");
  EXPECT_EQ(workbench.Run("savefeature(copy, \"hsv\")"), "");
  EXPECT_EQ(FileBytes("FeatureStorage/hsv-im2.dat"), good);
}

TEST_F(TEvaluation, SavingTellsOfImagesThatShareAFile) {
  // What an editor keeps of the state before.
  MakePicture("photos/im1.jpg~", 8, 8, qRgb(0, 0, 255));
  workbench.Run("db = loaddatabase(\"photos\")");
  workbench.Run("updatefeature(db, \"hsv\")");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(workbench.Run("savefeature(db, \"hsv\")"),
              "1 images are not saved: others behind them have the same stem\n");
  }
  EXPECT_EQ(workbench.Run("loadfeature(db, \"hsv\")"),
            "Loading features..\n1 stored features come from other pictures\nDone\n");
}

}  // namespace
