// Pictures that were made to do harm, or were damaged badly: what they may cost is their own pixels.

#include <sstream>

#include <QProcess>
#include <gtest/gtest.h>

#include "images/image-rgb.h"
#include "tests/support/test-pictures.h"
#include "tests/support/workbench.h"

namespace {

std::string BigEndian(unsigned number, int size) {
  std::string bytes;
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift);
  }
  return bytes;
}

/// A Photoshop document of 24-bit pixels that all have one color. Each row is packed: the number of equal bytes, as
/// 1 - n, and the byte.
std::string PsdBytes(int width, int height, const TColor& color) {
  std::string bytes = "8BPS" + BigEndian(1, 2) + std::string(6, '\0') + BigEndian(3, 2);
  bytes += BigEndian(static_cast<unsigned>(height), 4) + BigEndian(static_cast<unsigned>(width), 4);
  // 8 bits a channel, red, green and blue; neither palette nor resources nor layers; packed.
  bytes += BigEndian(8, 2) + BigEndian(3, 2) + std::string(12, '\0') + BigEndian(1, 2);
  for (int row = 0; row < 3 * height; ++row) {
    bytes += BigEndian(2, 2);
  }
  for (const unsigned char level : color) {
    for (int row = 0; row < height; ++row) {
      bytes += {static_cast<char>(1 - width), static_cast<char>(level)};
    }
  }
  return bytes;
}

TEST(HostilePictures, APsdThatIsCutOffEndsNoSession) {
  const TScratchDirectory directory;
  constexpr TColor kOlive = {100, 150, 50};
  const std::string sound = PsdBytes(40, 30, kOlive);
  MakeFile("photos/sound.jpg", sound);
  MakePicture("photos/good.jpg", 40, 30, qRgb(255, 0, 0));
  int cut = 0;
  for (std::size_t size = 100; size < sound.size(); size += 15, ++cut) {
    MakeFile("photos/cut" + std::to_string(size) + ".jpg", sound.substr(0, size));
  }
  QProcess process;
  process.start(BATCH_PROGRAM, {"-e", "db = loaddatabase(\"photos\")", "-e", "updatefeature(db, \"hsv\")", "-e",
                                "a = loadimage(\"photos/sound.jpg\")"});
  ASSERT_TRUE(process.waitForFinished(120000));
  ASSERT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 3) << "every line succeeded, but not every picture is whole";
  const std::string output = process.readAllStandardOutput().toStdString();
  EXPECT_NE(output.find("> a = loadimage"), std::string::npos) << output;
  EXPECT_NE(output.find("  File 'photos/cut100.jpg' is damaged\n"), std::string::npos) << output;
  // The first ten by name.
  EXPECT_NE(output.find("  " + std::to_string(cut - 10) + " more files are damaged\n"), std::string::npos) << output;
  EXPECT_EQ(process.readAllStandardError(), "");

  TImageRGB picture;
  ASSERT_TRUE(picture.LoadFromFile("photos/sound.jpg"));
  ASSERT_EQ(std::pair(picture.GetWidth(), picture.GetHeight()), std::pair(40, 30));
  for (int i = 0; i < 40 * 30; ++i) {
    const unsigned char* pixel =
        picture.GetPixels() + std::ptrdiff_t{i / 40} * picture.GetStride() + std::ptrdiff_t{i % 40} * 3;
    ASSERT_EQ((TColor{pixel[0], pixel[1], pixel[2]}), kOlive) << i;
  }
}

struct TSession {
  std::string output;
  std::string ranking;
  std::string variables;
  std::string segments;
};

/// What one session makes of a database and of one more picture that is compared with it.
TSession Describe(const QString& folder, int status) {
  QProcess process;
  QStringList arguments = {"--rankings", "out", "--variables", "out.tsv", "--segments", "segments.tsv"};
  for (const QString& line :
       {"db = loaddatabase(\"" + folder + "\")", QString("a = loadimage(\"query.png\")"),
        QString("updatefeature(db, \"hsv\")"), QString("updatefeature(a, \"hsv\")"),
        QString("segmentimage(db, \"sift\")"), QString("segmentimage(db, \"grid\")"),
        QString("updatefeature(db, \"lbp\")"), QString("index = searchimage(db, a)"), QString("displayindex(index)")}) {
    arguments << "-e" << line;
  }
  process.start(BATCH_PROGRAM, arguments);
  EXPECT_TRUE(process.waitForFinished(280000));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), status);
  EXPECT_EQ(process.readAllStandardError(), "");
  return {process.readAllStandardOutput().toStdString(), FileBytes("out/index.tsv"), FileBytes("out.tsv"),
          FileBytes("segments.tsv")};
}

std::vector<std::string> LinesWith(const std::string& text, const std::string& part) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.find(part) != std::string::npos) {
      lines.push_back(line);
    }
  }
  return lines;
}

TEST(HostilePictures, TwoHundredOfThemInADatabaseLeaveTheOthersAsTheyAre) {
  const TScratchDirectory directory;
  MakePicture("query.png", 40, 30, qRgb(255, 0, 0));
  int count = 0;
  std::filesystem::create_directory("all");
  for (const auto& entry : std::filesystem::directory_iterator(HOSTILE_PICTURES)) {
    std::filesystem::copy_file(entry.path(), "all" / entry.path().filename());
    ++count;
  }
  EXPECT_GE(count, 200);
  for (const std::string folder : {"few", "all"}) {
    MakePicture(folder + "/ours1.jpg", 40, 30, qRgb(255, 0, 0));
    MakePicture(folder + "/ours2.jpg", 64, 48, qRgb(200, 100, 0));
    std::filesystem::copy_file(SAMPLES_DIRECTORY "/photos/im5.jpg", folder + "/ours3.jpg");
  }
  const TSession few = Describe("few", 0);
  const TSession all = Describe("all", 3);
  // Distances and segments of ours do not know of the others, ranks and places do.
  const auto distances = [](const TSession& session) {
    std::vector<std::string> found;
    for (const std::string& line : LinesWith(session.ranking, "ours")) {
      found.push_back(line.substr(line.find("ours")));
    }
    return found;
  };
  EXPECT_EQ(distances(few).size(), 3U);
  EXPECT_EQ(LinesWith(all.ranking, ".jpg").size(), static_cast<std::size_t>(count + 3));
  EXPECT_EQ(distances(all), distances(few));
  EXPECT_EQ(LinesWith(all.segments, "ours").size(), 3 * 64U);
  EXPECT_EQ(LinesWith(all.variables, "number of images: " + std::to_string(count + 3) + ",").size(), 1U);
  EXPECT_EQ(LinesWith(all.output, "Function failed").size(), 0U);
  EXPECT_EQ(LinesWith(few.output, "File").size(), 0U);
}

}  // namespace
