// The limits that the manual names, each from both sides.

#include <QBuffer>
#include <QProcess>
#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "tests/support/workbench.h"

namespace {

/// A JPEG file of one row of pixels, whose header says that there are `width` of them.
std::string JpegBytes(int madeWidth, int width) {
  QImage picture(madeWidth, 1, QImage::Format_RGB32);
  picture.fill(Qt::red);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  EXPECT_TRUE(picture.save(&buffer, "jpg"));
  // The frame header: marker, length, bits a sample, height, width.
  const qsizetype frame = bytes.indexOf(QByteArray("\xff\xc0", 2));
  EXPECT_GT(frame, 0);
  bytes[frame + 7] = static_cast<char>(width >> 8);
  bytes[frame + 8] = static_cast<char>(width & 0xff);
  return bytes.toStdString();
}

TEST(Limits, AJpegHasAtMost65500PixelsInARow) {
  TWorkbench workbench;
  // Both widths need as many blocks of 8 pixels, so nothing but the number differs.
  MakeFile("fits.jpg", JpegBytes(65500, 65500));
  MakeFile("wider.jpg", JpegBytes(65500, 65501));
  workbench.Run("a = loadimage(\"fits.jpg\")");
  workbench.Run("b = loadimage(\"wider.jpg\")");
  EXPECT_EQ(workbench.Run("updatefeature(a, \"hsv\")"), "");
  EXPECT_EQ(workbench.Run("updatefeature(b, \"hsv\")"), "File 'wider.jpg' cannot be read\n");
}

TEST(Limits, APictureWithoutCompressionMayBeWider) {
  TWorkbench workbench;
  MakePicture("wide.jpg", 100000, 1, qRgb(255, 0, 0));
  workbench.Run("a = loadimage(\"wide.jpg\")");
  EXPECT_EQ(workbench.Run("updatefeature(a, \"hsv\")"), "");
}

std::string LittleEndian(unsigned number) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) {
    bytes += static_cast<char>(number >> shift);
  }
  return bytes;
}

/// The beginning of a file of 24-bit pixels, of which there are none.
std::string BmpHeader(unsigned width, unsigned height) {
  return "BM" + LittleEndian(54) + LittleEndian(0) + LittleEndian(54) + LittleEndian(40) + LittleEndian(width) +
         LittleEndian(height) + LittleEndian(1 | 24 << 16) + std::string(24, '\0');
}

/// The same for pixels of three floats.
std::string PfmHeader(unsigned width, unsigned height) {
  return "PF\n" + std::to_string(width) + " " + std::to_string(height) + "\n-1.0\n";
}

TEST(Limits, APictureHasAtMost2To28PixelsAnd2GiBInItsDecodersFormAndAFileToHoldThem) {
  const TScratchDirectory directory;
  struct TCase {
    const char* name;
    std::string header;
    std::uintmax_t size;
    const char* fault;
  };
  constexpr std::uintmax_t kAmple = 1000000;
  // 13378 pixels of 12 bytes make 160536 bytes, and 2^31 / 160536 is 13376.96. 4096 x 4097 are 16781312.
  const std::vector<TCase> cases = {
      {"fits.bmp", BmpHeader(16384, 16384), kAmple, ""},
      {"higher.bmp", BmpHeader(16384, 16385), kAmple, "  File 'higher.bmp' is too large: 16384 x 16385\n"},
      {"wider.jpg", BmpHeader(1U << 29, 1), 54, "  File 'wider.jpg' is too large: 536870912 x 1\n"},
      {"fits.pfm", PfmHeader(13378, 13376), kAmple, ""},
      {"higher.pfm", PfmHeader(13378, 13377), kAmple, "  File 'higher.pfm' is too large: 13378 x 13377\n"},
      {"digits.pbm", "P4\n" + std::string(40, '9') + " 16\n", 200, "  File 'digits.pbm' cannot be read\n"},
      {"small.bmp", BmpHeader(4096, 4096), 54, ""},
      {"filled.bmp", BmpHeader(4096, 4097), 16782, ""},
      {"empty.bmp", BmpHeader(4096, 4097), 16781, "  File 'empty.bmp' cannot be read\n"}};
  for (const auto& [name, header, size, fault] : cases) {
    MakeFile(name, header);
    std::filesystem::resize_file(name, size);
    const std::string load = "a = loadimage(\"" + std::string(name) + "\")";
    QProcess process;
    // Nobody sees the picture, so that only the header is read.
    process.start(BATCH_PROGRAM, {"-e", load.c_str(), "-e", "displayimage(a)"});
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.readAllStandardOutput().toStdString(), "> " + load + "\n> displayimage(a)\n" + fault);
  }
  TWorkbench workbench;
  MakeFile("higher.bmp", BmpHeader(16384, 16385));
  workbench.Run("a = loadimage(\"higher.bmp\")");
  EXPECT_EQ(workbench.Run("updatefeature(a, \"hsv\")"), "File 'higher.bmp' is too large: 16384 x 16385\n");
  EXPECT_EQ(workbench.Run("displayimage(a)"), "File 'higher.bmp' is too large: 16384 x 16385\n");
}

TEST(Limits, AStoredFeatureHasAtMost16777216Numbers) {
  TScratchDirectory directory;
  std::filesystem::copy_file(std::filesystem::path(PLUGIN_FIXTURES) / "length-limit", "FeatureFixture.so");
  MakePicture("photos/fits.jpg", 8, 8, qRgb(255, 0, 0));
  MakePicture("photos/longer.jpg", 8, 8, qRgb(255, 0, 0));
  MakeFile("FeatureStorage/fixture-fits.dat", "");
  MakeFile("FeatureStorage/fixture-longer.dat", "");
  std::filesystem::resize_file("FeatureStorage/fixture-fits.dat", 8UL * 16777216);
  std::filesystem::resize_file("FeatureStorage/fixture-longer.dat", 8UL * 16777217);
  MainWindow window;
  TRecordingView view(window);
  TCtrlMain controller(view);
  controller.ExecuteCommand("db = loaddatabase(\"photos\")");
  view.output.clear();
  controller.ExecuteCommand("loadfeature(db, \"fixture\")");
  EXPECT_EQ(view.output,
            "> loadfeature(db, \"fixture\")\n  Loading features..\n"
            "  File 'FeatureStorage/fixture-longer.dat' is too large\n  Done\n");
  const auto& database = dynamic_cast<const TVarDatabase&>(*controller.GetVarList().Find("db"));
  EXPECT_EQ(database.GetImages()[0]->GetImageSegment().GetFeatures().Find("fixture")->GetLength(), 16777216U);
}

TEST(Limits, ScriptsNest32Deep) {
  TWorkbench workbench;
  for (int i = 1; i <= 33; ++i) {
    MakeFile("s" + std::to_string(i) + ".txt", "executescript(\"s" + std::to_string(i + 1) + ".txt\")\r\n");
  }
  const std::string tooDeep = "Scripts are nested too deeply";
  workbench.Run("executescript(\"s1.txt\")");
  EXPECT_NE(workbench.GetOutput().find("> executescript(\"s33.txt\")\n  " + tooDeep), std::string::npos);
  EXPECT_EQ(workbench.GetOutput().find("s34.txt"), std::string::npos);

  TWorkbench other;
  for (int i = 2; i <= 33; ++i) {
    MakeFile("s" + std::to_string(i) + ".txt", "executescript(\"s" + std::to_string(i + 1) + ".txt\")\r\n");
  }
  MakeFile("s33.txt", "c = createclassifier(\"svm\")\r\n");
  other.Run("executescript(\"s2.txt\")");
  EXPECT_EQ(other.GetOutput().find(tooDeep), std::string::npos);
  EXPECT_EQ(other.GetColumn(0), std::vector<std::string>{"c"});
}

}  // namespace
