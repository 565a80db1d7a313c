#include "features/feature-plugin.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "features/feature-list.h"
#include "images/feature-vector.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"
#include "tests/support/scratch-directory.h"

namespace filesystem = std::filesystem;

namespace {

using TLines = std::vector<std::string>;
using TNumbers = std::vector<double>;

TLines Names(const TFeatureList& list) {
  TLines names;
  for (const auto& feature : list.GetFeatures()) {
    names.push_back(feature->GetName());
  }
  return names;
}

/// Puts one of the fixture libraries into the working directory.
void CopyFixture(const std::string& fixture, const std::string& fileName) {
  filesystem::copy_file(filesystem::path(PLUGIN_FIXTURES) / fixture, fileName);
}

/// The features of a working directory in which that fixture is the only plug-in.
TFeatureList ListWith(const std::string& fixture) {
  CopyFixture(fixture, "Feature-" + fixture + ".so");
  return TFeatureList();
}

TNumbers Numbers(const TFeatureVector& vector) {
  return {vector.GetData(), vector.GetData() + vector.GetLength()};
}

/// A picture of 3 x 2 with 9, 8, 7 as its last pixel.
class TPluginTest : public testing::Test {
 protected:
  TPluginTest() {
    color.SetSize(3, 2, true);
    color.SetPixel(0, 0, 255, 0, 12);
    color.SetPixel(2, 1, 9, 8, 7);
    gray.SetSize(3, 2);
    gray.SetPixel(2, 1, 66);
  }

  const TScratchDirectory scratch;
  TImageRGB color;
  TImageGray gray;
  TFeatureVector vector;
};

}  // namespace

TEST_F(TPluginTest, WithoutPluginsThereAreTheTwoBuiltInFeatures) {
  const TFeatureList list;
  EXPECT_EQ(Names(list), (TLines{"hsv", "lbp"}));
  EXPECT_EQ(list.GetRefusals(), TLines());
  EXPECT_EQ(list.Find("lbp"), list.GetFeatures()[1].get());
  EXPECT_EQ(list.Find("LBP"), nullptr);
  EXPECT_EQ(list.Find(""), nullptr);
}

TEST_F(TPluginTest, TheTemplateOfTheSdkRuns) {
  filesystem::copy_file(TEMPLATE_PLUGIN, "FeatureMeanColor.so");
  const TFeatureList list;
  EXPECT_EQ(list.GetRefusals(), TLines());
  ASSERT_EQ(Names(list), (TLines{"hsv", "lbp", "meancolor"}));
  const TFeature* feature = list.Find("meancolor");
  EXPECT_TRUE(feature->NeedsColor());
  EXPECT_FALSE(feature->NeedsGrayscale());
  ASSERT_TRUE(feature->ProcessColor(color, vector));
  EXPECT_EQ(vector.GetName(), "meancolor");
  EXPECT_EQ(Numbers(vector), (TNumbers{264.0 / (255.0 * 6.0), 8.0 / (255.0 * 6.0), 19.0 / (255.0 * 6.0)}));
  ASSERT_TRUE(feature->ProcessColor(TImageRGB(), vector));
  EXPECT_EQ(Numbers(vector), (TNumbers{0.0, 0.0, 0.0}));
}

TEST_F(TPluginTest, OnlyFilesOfTheWorkingDirectoryNamedAsPluginsAreTried) {
  CopyFixture("plain", "MyFeature.so");
  CopyFixture("plain", "featurelower.so");
  CopyFixture("plain", "Feature.dylib");
  filesystem::create_directory("inner");
  CopyFixture("plain", "inner/FeatureInner.so");
  EXPECT_EQ(Names(TFeatureList()), (TLines{"hsv", "lbp"}));
  CopyFixture("plain", "FeatureX.so.bak");
  const TFeatureList list;
  EXPECT_EQ(Names(list), (TLines{"hsv", "lbp", "fixture"}));
  EXPECT_EQ(list.GetRefusals(), TLines());
}

TEST_F(TPluginTest, FileNamesWithBlanksAndAccentsLoad) {
  CopyFixture("plain", "Feature caf\xc3\xa9 1.so");
  EXPECT_EQ(Names(TFeatureList()), (TLines{"hsv", "lbp", "fixture"}));
}

TEST_F(TPluginTest, PicturesReachTheLibraryWithTheirStrides) {
  const TFeatureList list = ListWith("plain");
  ASSERT_TRUE(list.Find("fixture")->ProcessColor(color, vector));
  EXPECT_EQ(vector.GetName(), "fixture");
  EXPECT_EQ(Numbers(vector), (TNumbers{9.0, 3.0, 2.0, 12.0}));
  ASSERT_TRUE(list.Find("fixture")->ProcessColor(TImageRGB(), vector));
  EXPECT_EQ(Numbers(vector), (TNumbers{-1.0, 0.0, 0.0, 0.0}));
}

TEST_F(TPluginTest, AGrayFeatureNeedsNoColorFunction) {
  const TFeatureList list = ListWith("gray");
  const TFeature* feature = list.Find("fixture");
  ASSERT_NE(feature, nullptr);
  EXPECT_TRUE(feature->NeedsGrayscale());
  EXPECT_FALSE(feature->NeedsColor());
  ASSERT_TRUE(feature->ProcessGrayscale(gray, vector));
  EXPECT_EQ(Numbers(vector), (TNumbers{66.0, 3.0, 2.0, 4.0}));
  ASSERT_TRUE(feature->ProcessColor(color, vector));
  EXPECT_EQ(vector.GetLength(), 0u);
}

TEST_F(TPluginTest, AFeatureOfBothKindsIsAskedForColorOnly) {
  const TFeatureList list = ListWith("both");
  ASSERT_NE(list.Find("fixture"), nullptr);
  EXPECT_TRUE(list.Find("fixture")->NeedsColor());
  EXPECT_TRUE(list.Find("fixture")->ProcessColor(color, vector));
  EXPECT_EQ(vector.GetLength(), 4u);
}

TEST_F(TPluginTest, OnlyTheLowByteOfAFlagCounts) {
  const TFeatureList list = ListWith("flag-bytes");
  ASSERT_NE(list.Find("fixture"), nullptr);
  EXPECT_FALSE(list.Find("fixture")->NeedsGrayscale()) << "0x100";
  EXPECT_TRUE(list.Find("fixture")->NeedsColor()) << "0x702";
}

TEST_F(TPluginTest, APluginThatTakesABuiltInNameNeverRuns) {
  const TFeatureList list = ListWith("named-lbp");
  EXPECT_EQ(Names(list), (TLines{"hsv", "lbp", "lbp"}));
  EXPECT_EQ(list.Find("lbp"), list.GetFeatures()[1].get());
  EXPECT_EQ(list.GetRefusals(), (TLines{"Plug-in 'Feature-named-lbp.so' never runs: there is another feature \"lbp\" "
                                        "before it"}));
}

TEST_F(TPluginTest, FurtherDirectoriesComeAfterwardsByName) {
  filesystem::create_directories("one");
  filesystem::create_directories("two/with a blank");
  CopyFixture("plain", "FeaturePlain.so");
  CopyFixture("willing", "one/FeatureB.so");
  CopyFixture("gray", "one/FeatureC.so");
  filesystem::copy_file(TEMPLATE_PLUGIN, "one/FeatureA.so");
  MakeFile("one/FeatureText.so", "no library");
  CopyFixture("named-lbp", "one/other.so");
  CopyFixture("both", "two/with a blank/Feature.so");
  // Met in the working directory already.
  filesystem::create_symlink(filesystem::absolute("FeaturePlain.so"), "one/FeatureAgain.so");
  const TFeatureList list({"one", filesystem::absolute("two") / "WITH A BLANK", "one", "none"});
  EXPECT_EQ(Names(list), (TLines{"hsv", "lbp", "fixture", "meancolor", "fixture", "fixture", "fixture"}));
  EXPECT_EQ(list.GetFeatures()[5]->NeedsGrayscale(), true) << "FeatureC.so";
  const auto hides = [](const std::string& file) {
    return "Plug-in '" + file + "' never runs: there is another feature \"fixture\" before it";
  };
  EXPECT_EQ(list.GetRefusals(), (TLines{hides("one/FeatureB.so"), hides("one/FeatureC.so"),
                                        "Plug-in 'one/FeatureText.so' was left out: it is no library",
                                        hides(filesystem::absolute("two") / "with a blank/Feature.so"),
                                        "Directory 'none' cannot be read"}));
  ASSERT_TRUE(list.Find("meancolor")->ProcessColor(color, vector));
  EXPECT_EQ(vector.GetLength(), 3u);
}

TEST_F(TPluginTest, TheLengthIsAskedForEachTime) {
  const TFeatureList list = ListWith("growing");
  for (const std::uint32_t length : {4u, 5u, 6u}) {
    ASSERT_TRUE(list.Find("fixture")->ProcessColor(color, vector));
    EXPECT_EQ(vector.GetLength(), length);
  }
}

TEST_F(TPluginTest, ALengthOutOfRangeFailsAndLeavesTheVectorAlone) {
  struct TCase {
    const char* fixture;
    bool isValid;
    std::uint32_t length;
  };
  const std::vector<TCase> cases = {{"length-negative", false, 2},
                                    {"length-zero", true, 0},
                                    {"length-limit", true, 1u << 24},
                                    {"length-beyond", false, 2}};
  for (const TCase& each : cases) {
    const TScratchDirectory ownDirectory;
    const TFeatureList list = ListWith(each.fixture);
    ASSERT_NE(list.Find("fixture"), nullptr) << each.fixture;
    TFeatureVector target;
    target.SetName("before");
    target.SetLength(2);
    EXPECT_EQ(list.Find("fixture")->ProcessColor(color, target), each.isValid) << each.fixture;
    EXPECT_EQ(target.GetLength(), each.length) << each.fixture;
    EXPECT_EQ(target.GetName(), each.isValid ? "fixture" : "before") << each.fixture;
  }
}

TEST_F(TPluginTest, LibrariesThatCannotServeAreLeftOutWithAReason) {
  struct TCase {
    const char* fixture;
    const char* reason;
  };
  const std::vector<TCase> cases = {
      {"name-empty", "name \"\""},
      {"name-null", "name \"\""},
      {"name-capital", "name \"meanColor\""},
      {"name-slash", "name \"a/b\""},
      {"name-backslash", "name \"a\\b\""},
      {"name-quote", "name \"a\"b\""},
      {"without-name", "does not export GetShortDescription"},
      {"without-length", "does not export GetFeatureLength"},
      {"without-color", "does not export ProcessColor"},
      {"without-gray", "does not export ProcessGrayscale"},
      {"needs-nothing", "needs neither color nor gray"},
      {"refusing", ": the wind is wrong"},
  };
  for (const TCase& each : cases) {
    const TScratchDirectory ownDirectory;
    const TFeatureList list = ListWith(each.fixture);
    EXPECT_EQ(Names(list), (TLines{"hsv", "lbp"})) << each.fixture;
    ASSERT_EQ(list.GetRefusals().size(), 1u) << each.fixture;
    const std::string& refusal = list.GetRefusals().front();
    EXPECT_NE(refusal.find("'Feature-" + std::string(each.fixture) + ".so'"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find(each.reason), std::string::npos) << refusal;
  }
}

TEST_F(TPluginTest, WhatIsNoLibraryIsNamedAndTheOthersLoad) {
  MakeFile("FeatureText.so", "no library");
  MakeFile("FeatureEmpty.so", "");
  filesystem::create_directory("FeatureDir.so");
  filesystem::create_symlink("nowhere", "FeatureDead.so");
  ASSERT_EQ(mkfifo("FeaturePipe.so", 0600), 0) << "which nobody must wait for";
  CopyFixture("plain", "FeatureGood.so");
  const TFeatureList list;
  EXPECT_EQ(Names(list), (TLines{"hsv", "lbp", "fixture"}));
  ASSERT_EQ(list.GetRefusals().size(), 5u);
  for (const auto& [file, reason] :
       {std::pair("FeatureText.so", "it is no library"), std::pair("FeatureEmpty.so", "it is no library"),
        std::pair("FeatureDir.so", "it is no library"),
        std::pair("FeatureDead.so", "it is a link to a file that is not there"),
        std::pair("FeaturePipe.so", "it is no library")}) {
    const std::string line = std::string("Plug-in '") + file + "' was left out: " + reason;
    EXPECT_EQ(std::count(list.GetRefusals().begin(), list.GetRefusals().end(), line), 1) << line;
  }
}
