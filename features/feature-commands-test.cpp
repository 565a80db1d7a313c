// Features through command lines, on real files and with a plug-in that misbehaves.

#include <cmath>
#include <filesystem>

#include <QBuffer>
#include <QImage>
#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "tests/support/workbench.h"

namespace {

TVarImage& Image(const TCtrlMain& controller, const char* name) {
  return dynamic_cast<TVarImage&>(*controller.GetVarList().Find(name));
}

TEST(TFunctionUpdateFeature, CountsEveryHundredImages) {
  TWorkbench workbench;
  MakePicture("db/im1.jpg", 4, 4, qRgb(1, 2, 3));
  for (int i = 2; i <= 250; ++i) {
    std::filesystem::copy_file("db/im1.jpg", "db/im" + std::to_string(i) + ".jpg");
  }
  const std::string begin = "Processing.. this could take some time\n";
  const std::string end = "Processing done\n";
  for (const auto& [count, lines] : {std::pair<int, std::string>{250, "100 images processed\n200 images processed\n"},
                                     {100, "100 images processed\n"},
                                     {99, ""}}) {
    for (int i = 250; i > count; --i) {
      std::filesystem::remove("db/im" + std::to_string(i) + ".jpg");
    }
    workbench.Run("db = loaddatabase(\"db\")");
    EXPECT_EQ(workbench.Run("updatefeature(db, \"hsv\")"), begin + lines + end) << count;
  }
}

TEST(TFunctionUpdateFeature, ReplacesVectorsInPlaceOnTheImageAndItsSegments) {
  TWorkbench workbench;
  MakePicture("a.png", 16, 16, qRgb(255, 0, 0));
  workbench.Run("a = loadimage(\"a.png\")");
  workbench.Run("segmentimage(a, \"grid\")");
  for (const char* feature : {"hsv", "lbp", "hsv"}) {
    EXPECT_EQ(workbench.Run(std::string("updatefeature(a, \"") + feature + "\")"), "");
  }
  EXPECT_EQ(workbench.GetColumn(2)[0], "Filename: \"a.png\", features: hsv, lbp, 64 segments with features: hsv, lbp");
  EXPECT_EQ(Image(workbench.controller, "a").GetSegments()[63]->GetFeatures().Find("hsv")->GetData()[15], 1.0);
  workbench.Run("removefeature(a, \"hsv\")");
  EXPECT_EQ(workbench.GetColumn(2)[0], "Filename: \"a.png\", features: lbp, 64 segments with features: lbp");
}

TEST(TFunctionUpdateFeature, ASegmentOutsideAPictureThatShrankIsClippedOrEmpty) {
  TWorkbench workbench;
  MakePicture("a.png", 80, 80, qRgb(255, 0, 0));
  workbench.Run("a = loadimage(\"a.png\")");
  workbench.Run("segmentimage(a, \"grid\")");
  // Half a cell wide: the first column keeps 5 of its 10 pixels, the others none.
  MakePicture("a.png", 5, 80, qRgb(0, 255, 0));
  workbench.Run("updatefeature(a, \"hsv\")");
  const auto& segments = Image(workbench.controller, "a").GetSegments();
  EXPECT_EQ(segments[0]->GetFeatures().Find("hsv")->GetData()[95], 1.0);
  EXPECT_TRUE(std::isnan(segments[1]->GetFeatures().Find("hsv")->GetData()[0]));
  std::filesystem::remove("a.png");
  workbench.Run("updatefeature(a, \"hsv\")");
  EXPECT_TRUE(std::isnan(segments[0]->GetFeatures().Find("hsv")->GetData()[0]));
  EXPECT_EQ(workbench.Run("displayimage(a)"), "File 'a.png' cannot be read\n");
}

/// A JPEG file that ends too early.
std::string CutOffJpeg() {
  QImage picture(64, 64, QImage::Format_RGB888);
  picture.fill(Qt::red);
  picture.setPixel(60, 60, qRgb(0, 0, 255));
  QByteArray bytes;
  QBuffer buffer(&bytes);
  picture.save(&buffer, "JPG");
  return bytes.chopped(20).toStdString();
}

TEST(TPictureReport, TenFilesOfEitherKindAreNamedAndTheOthersCounted) {
  TWorkbench workbench;
  const std::string begin = "Processing.. this could take some time\n";
  std::string named;
  for (char letter = 'a'; letter < 'a' + 12; ++letter) {
    MakeFile(std::string("db/") + letter + ".jpg", letter == 'c' ? CutOffJpeg() : "no picture");
    if (letter < 'a' + 11) {
      named += std::string("File 'db/") + letter + (letter == 'c' ? ".jpg' is damaged\n" : ".jpg' cannot be read\n");
    }
  }
  workbench.Run("db = loaddatabase(\"db\")");
  for (const char* line : {"updatefeature(db, \"hsv\")", "segmentimage(db, \"grid\")", "segmentimage(db, \"sift\")"}) {
    EXPECT_EQ(workbench.Run(line), begin + named + "1 more files cannot be read\nProcessing done\n") << line;
  }
  for (char letter = 'd'; letter < 'a' + 12; ++letter) {
    MakeFile(std::string("db/") + letter + ".jpg", CutOffJpeg());
    MakeFile(std::string("db/m") + letter + ".jpg", letter < 'f' ? CutOffJpeg() : "no picture");
  }
  MakeFile("db/mm.jpg", "no picture");
  MakeFile("db/mn.jpg", "no picture");
  workbench.Run("db = loaddatabase(\"db\")");
  // 10 + 2 are damaged, 2 + 7 + 2 cannot be read.
  EXPECT_TRUE(workbench.Run("updatefeature(db, \"lbp\")")
                  .ends_with("File 'db/mm.jpg' cannot be read\n1 more files cannot be read\n"
                             "2 more files are damaged\nProcessing done\n"));
  // What could be read is used: a picture of one color but for its end.
  workbench.Run("c = loadimage(\"db/c.jpg\")");
  EXPECT_EQ(workbench.Run("updatefeature(c, \"hsv\")"), "File 'db/c.jpg' is damaged\n");
  EXPECT_GT(Image(workbench.controller, "c").GetImageSegment().GetFeatures().Find("hsv")->GetData()[15], 0.2);
  EXPECT_EQ(workbench.Run("segmentimage(c, \"grid\")"), "File 'db/c.jpg' is damaged\n");
  EXPECT_EQ(workbench.controller.GetFailedLines(), 0);
}

TEST(TFunctionSearchImage, SaysIfNothingCanBeCompared) {
  TWorkbench workbench;
  MakeFile("none.jpg", "no picture");
  MakePicture("db/a.jpg", 4, 4, qRgb(255, 0, 0));
  for (const char* line : {"q = loadimage(\"none.jpg\")", "db = loaddatabase(\"db\")", "updatefeature(q, \"hsv\")",
                           "updatefeature(db, \"hsv\")"}) {
    workbench.Run(line);
  }
  EXPECT_EQ(workbench.Run("i = searchimage(db, q)"), "Matching with features: hsv\nNo image can be compared\n");
  EXPECT_EQ(workbench.Run("displayindex(i, false)"), "");
}

TEST(TFunctionUpdateFeature, APluginWithAnInvalidLengthFailsTheCommandAndLeavesNoVector) {
  for (const char* fixture : {"length-negative", "length-beyond"}) {
    TScratchDirectory directory;
    std::filesystem::copy_file(std::filesystem::path(PLUGIN_FIXTURES) / fixture, "FeatureFixture.so");
    MakePicture("db/a.jpg", 4, 4, qRgb(255, 0, 0));
    MainWindow window;
    TRecordingView view(window);
    TCtrlMain controller(view);
    EXPECT_EQ(view.output, "") << fixture;
    controller.ExecuteCommand("db=loaddatabase(\"db\")");
    view.output.clear();
    controller.ExecuteCommand("updatefeature(db,\"fixture\")");
    EXPECT_EQ(view.output,
              "> updatefeature(db,\"fixture\")\n  Processing.. this could take some time\n"
              "  Feature 'fixture' has an invalid length\n  Function failed\n");
    const auto& database = dynamic_cast<const TVarDatabase&>(*controller.GetVarList().Find("db"));
    EXPECT_TRUE(database.GetImages()[0]->GetImageSegment().GetFeatures().GetItems().empty());
  }
}

}  // namespace
