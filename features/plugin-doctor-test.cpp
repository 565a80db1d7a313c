#include "features/plugin-doctor.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/text.h"
#include "base/trial.h"
#include "tests/support/scratch-directory.h"

namespace filesystem = std::filesystem;

namespace {

using TLines = std::vector<std::string>;

struct TReport {
  bool isSound;
  TLines lines;

  TLines GetFaults() const {
    TLines faults;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(faults),
                 [](const std::string& line) { return line.starts_with("FAULT"); });
    return faults;
  }
};

TReport Check(const std::string& fileName, int patience = 10000) {
  TReport report = {};
  report.isSound = CheckPlugin(
      fileName, [&report](const std::string& line) { report.lines.push_back(line); }, patience);
  return report;
}

/// The report on one of the fixtures, under a name that the workbench accepts.
TReport CheckFixture(const std::string& fixture, int patience = 10000) {
  const std::string fileName = "Feature-" + fixture + ".so";
  filesystem::copy_file(filesystem::path(PLUGIN_FIXTURES) / fixture, fileName,
                        filesystem::copy_options::overwrite_existing);
  return Check(fileName, patience);
}

class TPluginDoctor : public testing::Test {
 protected:
  void SetUp() override {
    if (!base::CanRunTrials()) {
      GTEST_SKIP() << "This platform has no doctor";
    }
  }

  const TScratchDirectory scratch;
};

}  // namespace

TEST_F(TPluginDoctor, TellsWhatASoundPluginIs) {
  filesystem::copy_file(TEMPLATE_PLUGIN, "FeatureMeanColor.so");
  const TReport report = Check("FeatureMeanColor.so");
  EXPECT_TRUE(report.isSound);
  ASSERT_EQ(report.lines.size(), 12u) << base::Join(report.lines, "\n");
  EXPECT_EQ(report.lines[0], "ok     exports all seven functions");
  EXPECT_EQ(report.lines[1], "ok     calls itself \"meancolor\": The mean color of a picture");
  EXPECT_EQ(report.lines[2], "ok     works on color, its vector has length 3");
  EXPECT_EQ(report.lines[9], "ok     loses no memory in 1000 calls");
  EXPECT_TRUE(report.lines[10].ends_with(" ms for a megapixel")) << report.lines[10];
  EXPECT_EQ(report.lines[11], "FeatureMeanColor.so is sound");
}

TEST_F(TPluginDoctor, SoundPluginsOfOtherKindsAreSoundToo) {
  // What is kept once and for all is no leak; an empty refusal is none.
  for (const char* fixture : {"keeps-a-cache", "willing", "flag-bytes", "length-zero"}) {
    const TReport report = CheckFixture(fixture);
    EXPECT_TRUE(report.isSound) << fixture << "\n" << base::Join(report.lines, "\n");
  }
}

TEST_F(TPluginDoctor, EachFaultHasItsLine) {
  struct TCase {
    const char* fixture;
    const char* fault;
  };
  // A fixture that crashes may be named by its signal in the user's language, so that word is left out.
  const std::vector<TCase> cases = {
      {"without-description", "does not export GetDescription"},
      {"without-length", "does not export GetFeatureLength"},
      {"without-color", "does not export ProcessColor"},
      {"name-capital", "cannot be used: its name \"meanColor\" is empty or cannot be typed"},
      {"needs-nothing", "cannot be used: it needs neither color nor gray"},
      {"named-lbp", "never runs: a built-in feature is called \"lbp\" too"},
      {"refusing", "cannot be used: the wind is wrong"},
      {"length-negative", "has no length on 0 x 0: asks for -1 numbers; the workbench gives 0 to 16777216"},
      {"length-beyond", "has no length on 0 x 0: asks for 16777217 numbers; the workbench gives 0 to 16777216"},
      {"growing",
       "gives different answers to 0 x 0, 1 x 1, 1 x 500, 500 x 1, 17 x 13, 101 x 75, 64 x 48 black, 64 x 48 gray, "
       "64 x 48 color, 64 x 48 noise, 4000 x 3000: 4 numbers, then 5"},
      {"crashes", "crashes on 1 x 1, 1 x 500: "},
      {"crashes-when-asked", "crashes when it is asked what it is: "},
      {"overflows-stack", "crashes on 1 x 500: "},
      {"exits", "crashes on 500 x 1: it ends the program with status 0"},
      {"throws", "crashes on 17 x 13: it throws an exception: 17 is my limit"},
      {"reads-before", "reads or writes beyond its memory on 0 x 0, 1 x 1, "},
      {"reads-behind", "reads or writes beyond its memory on 0 x 0, 1 x 1, "},
      {"writes-pixels", "reads or writes beyond its memory on 17 x 13: writes to the pixels"},
      {"writes-before", "reads or writes beyond its memory on 0 x 0, 1 x 1, "},
      {"writes-behind", "reads or writes beyond its memory on 0 x 0, 1 x 1, "},
      {"forgets", "leaves elements unwritten on 0 x 0, 1 x 1, "},
      {"divides", "gives values that are not finite on 0 x 0, 64 x 48 black: element 1 is "},
      {"counts", "gives different answers to 0 x 0, 1 x 1, "},
      {"reads-padding", "gives different answers to 1 x 1, 1 x 500, 17 x 13, 101 x 75: element 3 is 85, then 195"},
      {"knows-its-process", "gives different answers to 64 x 48 noise: another process gets another answer"},
      {"loses-bytes", "loses memory: "},
  };
  for (const TCase& each : cases) {
    const TReport report = CheckFixture(each.fixture);
    EXPECT_FALSE(report.isSound) << each.fixture;
    ASSERT_EQ(report.GetFaults().size(), 1u) << each.fixture << "\n" << base::Join(report.lines, "\n");
    EXPECT_TRUE(report.GetFaults().front().starts_with("FAULT  " + std::string(each.fault)))
        << each.fixture << "\n"
        << base::Join(report.lines, "\n");
    EXPECT_EQ(report.lines.back(), "Feature-" + std::string(each.fixture) + ".so is not sound: 1 fault");
  }
}

TEST_F(TPluginDoctor, TellsOnWhichSideOfWhichMemory) {
  for (const auto& [fixture, place] : {std::pair("reads-before", "before the first byte of the pixels"),
                                       std::pair("reads-behind", "behind the last byte of the pixels"),
                                       std::pair("writes-before", "before the first byte of the vector"),
                                       std::pair("writes-behind", "behind the last byte of the vector")}) {
    const TReport report = CheckFixture(fixture);
    ASSERT_EQ(report.GetFaults().size(), 1u);
    EXPECT_TRUE(report.GetFaults().front().ends_with(place)) << report.GetFaults().front();
  }
}

TEST_F(TPluginDoctor, EndsWhatHangsAndSaysWhatWasNotTried) {
  const TReport report = CheckFixture("hangs", 1000);
  EXPECT_FALSE(report.isSound);
  EXPECT_EQ(report.GetFaults(),
            (TLines{"FAULT  does not answer within 1 s on 101 x 75: the pictures behind it were not tried"}));
  EXPECT_EQ(std::count_if(report.lines.begin(), report.lines.end(),
                          [](const std::string& line) { return line.starts_with("-      not tried: "); }),
            2)
      << base::Join(report.lines, "\n");
  // One that cuts itself off is ended as well, and whoever waits for it does not wait forever.
  const TLines faults = CheckFixture("closes-and-hangs").GetFaults();
  ASSERT_EQ(faults.size(), 1u);
  EXPECT_TRUE(faults.front().starts_with("FAULT  crashes on 101 x 75: ")) << faults.front();
}

TEST_F(TPluginDoctor, SeesLostMemoryThatTheAllocatorDoesNotKnow) {
  if (!base::MemoryInUse().mapped) {
    GTEST_SKIP() << "The platform, or a sanitizer, does not tell what is mapped";
  }
  const TReport report = CheckFixture("loses-pages");
  EXPECT_EQ(report.GetFaults(), (TLines{"FAULT  loses memory: 65536 bytes with each call, in 1000 calls"}));
}

TEST_F(TPluginDoctor, WhatIsNoPluginIsNamed) {
  MakeFile("FeatureText.so", "no library");
  EXPECT_EQ(Check("FeatureText.so").lines,
            (TLines{"FAULT  cannot be used: it is no library", "FeatureText.so is not sound: 1 fault"}));
  std::string library = FileBytes(filesystem::path(PLUGIN_FIXTURES) / "plain");
  MakeFile("FeatureCut.so", library.substr(0, library.size() / 4));
  EXPECT_EQ(Check("FeatureCut.so").lines.front(), "FAULT  cannot be used: it is cut off or damaged");
  // The field e_machine of the ELF header; 22 is IBM's S/390.
  library[18] = 22;
  MakeFile("FeatureOther.so", library);
  const std::string other = "FAULT  cannot be used: it is a library for another processor";
  EXPECT_EQ(Check("FeatureOther.so").lines.front(), other);
  // The other order of bytes: the field EI_DATA, and e_type turned around.
  library = FileBytes(filesystem::path(PLUGIN_FIXTURES) / "plain");
  library[5] = static_cast<char>(3 - library[5]);
  std::swap(library[16], library[17]);
  MakeFile("FeatureOrder.so", library);
  EXPECT_EQ(Check("FeatureOrder.so").lines.front(), other);
  // A segment that begins one byte before the end of all numbers: the field p_offset of the first program header, which
  // stands behind the file's header of 64 bytes.
  library = FileBytes(filesystem::path(PLUGIN_FIXTURES) / "plain");
  std::fill_n(library.begin() + 64 + 8, 8, '\xff');
  MakeFile("FeatureForged.so", library);
  EXPECT_EQ(Check("FeatureForged.so").lines.front(), "FAULT  cannot be used: it is cut off or damaged");
  library = FileBytes(filesystem::path(PLUGIN_FIXTURES) / "plain");
  MakeFile("plain.so", library);
  EXPECT_EQ(
      Check("plain.so").GetFaults(),
      (TLines{"FAULT  the workbench passes it over: its name does not begin with Feature or has no library ending"}));
}
