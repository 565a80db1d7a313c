#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/support/program-test.h"
#include "tests/support/test-pictures.h"

inline constexpr TColor kRed = {255, 0, 0};
inline constexpr TColor kGreen = {0, 255, 0};
inline constexpr TColor kBlue = {0, 0, 255};

/// tessimar-experiment over small collections whose figures can be worked out on paper.
class TExperimentFlow : public TProgramTest {
 protected:
  TOutcome Run(const QStringList& arguments) { return TProgramTest::Run(EXPERIMENT_PROGRAM, arguments); }

  /// Four columns of pixels, each of one color. "hsv" counts them: the distance of two pictures is the sum of the
  /// differences in quarters.
  static void MakeColumns(const std::string& path, const std::vector<TColor>& columns) {
    MakePicture(path, 4, 4, [&](int x, int) { return columns[static_cast<std::size_t>(x)]; });
  }

  /// The collection of the worked example.
  static void MakeSixPictures() {
    MakeColumns("photos/im1.jpg", {kRed, kRed, kRed, kRed});
    MakeColumns("photos/im2.jpg", {kRed, kRed, kRed, kGreen});
    MakeColumns("photos/im3.jpg", {kRed, kRed, kGreen, kGreen});
    MakeColumns("photos/im4.jpg", {kGreen, kGreen, kGreen, kGreen});
    MakeColumns("photos/im5.jpg", {kBlue, kBlue, kBlue, kBlue});
    MakeColumns("photos/im6.jpg", {kRed, kRed, kBlue, kBlue});
    MakeFile("tags/a.txt", "1\r\n3\r\n4\r\n");
    MakeFile("tags/b.txt", "2\n3\n5\n6");
  }

  /// The bytes of every result file by its name.
  static std::map<std::string, std::string> Results(const std::string& out) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(out)) {
      const std::string name = std::filesystem::relative(entry.path(), out).string();
      const bool isResult = !name.starts_with("features") && !name.starts_with("parts") && name != "times.tsv";
      if (isResult && entry.is_regular_file()) {
        files[name] = FileBytes(entry.path());
      }
    }
    return files;
  }
};
