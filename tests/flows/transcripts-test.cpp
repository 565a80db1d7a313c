// Every file of tests/transcripts is a text of the output pane: the lines with "> " are typed, all others must come
// back letter for letter. All of them start from the same small collection.

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/workbench.h"

namespace {

/// photos/ holds four images, of which im2 and im10 have the same color, among entries that are none.
void LayOutCollection() {
  MakePicture("photos/im1.jpg", 40, 30, qRgb(255, 0, 0));
  MakePicture("photos/im2.jpg", 64, 64, qRgb(0, 255, 0));
  MakePicture("photos/im10.jpg", 30, 40, qRgb(0, 255, 0));
  MakePicture("photos/im3.jpg.bak", 8, 8, qRgb(0, 0, 255));
  MakePicture("photos/IM4.JPG", 8, 8, qRgb(0, 0, 255));
  MakeFile("photos/notes.txt", "no image");
  MakeFile("photos/deep.jpg/im5.jpg", "in a directory of its own");
  MakePicture(
      "My Pictures/Gr\xc3\xbc\xc3\x9f"
      "e, 1.jpg",
      20, 20, qRgb(128, 128, 128));
  MakePicture("query.png", 16, 16, qRgb(0, 255, 0));
  MakeFile("text.jpg", "this is no picture");
  MakeFile("empty/readme", "");
  MakeFile("tree/a/im1.jpg", "in a directory of its own");
  MakeFile("tree/b.jpg/c.png", "too");
  MakeFile("tree/Scan.TIFF", "never opened");
  MakeFile("one.txt", "help reset\r\n\r\nq = loadimage(\"query.png\")\r\nnot run, for want of a line end");
  MakeFile("unix.txt", "reset()\nreset())\n");
  MakeFile("selfish.txt", "executescript(\"selfish.txt\")\r\nexecutescript(\"./Selfish.TXT\")\r\n");
}

class TTranscript : public testing::TestWithParam<std::string> {};

TEST_P(TTranscript, ComesBackLetterForLetter) {
  const std::string expected = FileBytes(std::filesystem::path(TRANSCRIPTS_DIRECTORY) / (GetParam() + ".txt"));
  TWorkbench workbench;
  LayOutCollection();
  std::istringstream lines(expected);
  std::size_t position = 0;
  for (std::string line; std::getline(lines, line); position += line.size() + 1) {
    // A line that the output holds already was not typed: it is the echo of a script's line.
    if (line.starts_with("> ") && workbench.GetOutput().size() <= position) {
      workbench.controller.ExecuteCommand(line.substr(2));
    }
  }
  EXPECT_EQ(workbench.GetOutput(), expected);
}

std::vector<std::string> FindTranscripts() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(TRANSCRIPTS_DIRECTORY)) {
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Transcripts, TTranscript, testing::ValuesIn(FindTranscripts()),
                         [](const auto& each) { return each.param; });

}  // namespace
