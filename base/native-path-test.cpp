#include "base/native-path.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/plugin-library.h"
#include "tests/support/ordinary-user.h"
#include "tests/support/scratch-directory.h"

namespace filesystem = std::filesystem;

namespace {

struct TLookUp {
  const char* asked;
  const char* found;
};

void ExpectFound(const std::vector<TLookUp>& cases) {
  for (const auto& [asked, found] : cases) {
    EXPECT_EQ(base::NativePath(asked), found) << "asked for " << asked;
  }
}

}  // namespace

TEST(NativePath, EveryComponentIsFoundInAnyCase) {
  const TScratchDirectory scratch;
  MakeFile("Holiday Pictures/S\xc3\xa3o Paulo/IMG, 1.JPG", "x");
  ExpectFound({
      {"holiday pictures\\s\xc3\xa3o paulo\\img, 1.jpg", "Holiday Pictures/S\xc3\xa3o Paulo/IMG, 1.JPG"},
      {"holiday pictures\\S\xc3\xa3o Paulo/img, 1.jpg", "Holiday Pictures/S\xc3\xa3o Paulo/IMG, 1.JPG"},
      {".\\holiday pictures\\..\\holiday pictures", "./Holiday Pictures/../Holiday Pictures"},
      {"holiday pictures/", "Holiday Pictures/"},
      {"holiday pictures\\", "Holiday Pictures/"},
      {"holiday pictures//s\xc3\xa3o paulo//", "Holiday Pictures//S\xc3\xa3o Paulo//"},
  });
  EXPECT_EQ(base::NativePath(scratch.GetPath().string() + "/HOLIDAY PICTURES"),
            scratch.GetPath().string() + "/Holiday Pictures");
  // Only the letters of ASCII have a case.
  MakeFile("\xc3\x89t\xc3\xa9.jpg", "x");
  EXPECT_TRUE(base::Exists("\xc3\x89T\xc3\xa9.JPG"));
  EXPECT_FALSE(base::Exists("\xc3\xa9t\xc3\xa9.jpg"));
}

TEST(NativePath, AnExactMatchWinsAndOfSeveralOthersTheFirstInByteOrder) {
  const TScratchDirectory scratch;
  for (const char* name : {"aB", "Ab", "AB"}) {
    MakeFile(std::string("several/") + name, "x");
    MakeFile(std::string("folders/") + name + "/file", name);
  }
  ExpectFound({{"several\\Ab", "several/Ab"},
               {"SEVERAL/aB", "several/aB"},
               {"several/ab", "several/AB"},
               {"folders/ab/file", "folders/AB/file"},
               {"folders/aB/FILE", "folders/aB/file"}});
  MakeFile("several/ab", "x");
  ExpectFound({{"several/ab", "several/ab"}});
  // What exists as written is not translated.
  MakeFile("a\\b.txt", "the name holds a backslash");
  MakeFile("a/b.txt", "another file");
  ExpectFound({{"a\\b.txt", "a\\b.txt"}, {"A\\B.TXT", "a/b.txt"}});
}

TEST(NativePath, WhatDoesNotExistStaysAsWritten) {
  const TScratchDirectory scratch;
  MakeFile("Pictures/Sub/a.jpg", "x");
  ExpectFound({{"", ""},
               {"Nothing.JPG", "Nothing.JPG"},
               {"pictures\\sub\\NewDir\\New.JPG", "Pictures/Sub/NewDir/New.JPG"},
               {"pictures/sub/a.jpg/x", "Pictures/Sub/a.jpg/x"}});
}

TEST(NativePath, WhatWasFoundBeforeMisleadsNobody) {
  const TScratchDirectory scratch;
  MakeFile("Before/Inner/a.jpg", "x");
  ExpectFound({{"before/inner/a.jpg", "Before/Inner/a.jpg"}});
  filesystem::rename("Before", "BEFORE");
  ExpectFound({{"before/inner/a.jpg", "BEFORE/Inner/a.jpg"}});
  filesystem::rename("BEFORE", "After");
  ExpectFound({{"before/inner/a.jpg", "before/inner/a.jpg"}, {"after/inner/a.jpg", "After/Inner/a.jpg"}});
  // A found directory does not hide its files written in another case.
  MakeFile("Pictures/a.jpg", "x");
  MakeFile("Pictures/B.JPG", "x");
  ExpectFound({{"pictures/a.jpg", "Pictures/a.jpg"}, {"pictures/b.jpg", "Pictures/B.JPG"}});
  // More directories than are remembered.
  for (int i = 0; i < 20; ++i) {
    const std::string directory = "Dir" + std::to_string(i);
    MakeFile(directory + "/F", "x");
    EXPECT_EQ(base::NativePath("dir" + std::to_string(i) + "/f"), directory + "/F");
  }
  ExpectFound({{"pictures/a.jpg", "Pictures/a.jpg"}, {"dir0/f", "Dir0/F"}});
}

TEST(NativePath, ADirectoryThatMayNotBeReadHidesItsFiles) {
  const TScratchDirectory scratch;
  MakeFile("Closed/a.jpg", "x");
  MakeFile("Listless/A.jpg", "x");
  filesystem::permissions("Closed", filesystem::perms::none);
  using filesystem::perms;
  filesystem::permissions("Listless", perms::owner_exec | perms::group_exec | perms::others_exec);
  const TOrdinaryUser user;
  if (!user.isOrdinary) {
    GTEST_SKIP() << "Running as root, and the system does not let root give its rights up.";
  }
  EXPECT_FALSE(base::Exists("Closed/a.jpg"));
  EXPECT_FALSE(base::IsRegularFile("closed/a.jpg"));
  EXPECT_TRUE(base::IsDirectory("closed"));
  EXPECT_EQ(base::NativePath("closed/a.jpg"), "Closed/a.jpg");
  EXPECT_FALSE(base::ListDirectory("closed"));
  EXPECT_FALSE(base::ListFiles("closed"));
  // Its files can be opened, but only by their exact names.
  EXPECT_TRUE(base::Exists("listless/A.jpg"));
  EXPECT_FALSE(base::Exists("listless/a.jpg"));
  EXPECT_FALSE(base::MakeWritableDirectory("Closed/inner"));
  EXPECT_FALSE(base::MakeDirectory("Closed/inner"));
}

TEST(NativePath, FilesAndDirectoriesAreToldApart) {
  const TScratchDirectory scratch;
  MakeFile("File", "x");
  filesystem::create_directory("Folder.jpg");
  filesystem::create_symlink("File", "LinkToFile");
  filesystem::create_symlink("nowhere", "DeadLink");
  for (const char* file : {"file", "linktofile"}) {
    EXPECT_TRUE(base::IsRegularFile(file)) << file;
    EXPECT_FALSE(base::IsDirectory(file)) << file;
  }
  for (const char* other : {"folder.jpg", "/dev/null", "deadlink", "File/", "", "new.jpg"}) {
    EXPECT_FALSE(base::IsRegularFile(other)) << other;
  }
  EXPECT_TRUE(base::IsDirectory("folder.jpg"));
  for (const char* nothing : {"", "File/"}) {
    EXPECT_FALSE(base::Exists(nothing)) << nothing;
    EXPECT_FALSE(base::IsDirectory(nothing)) << nothing;
  }
}

TEST(ListFiles, LinksToDirectoriesAreLeftOutAndAllElseIsListed) {
  const TScratchDirectory scratch;
  MakeFile("Dir/a.jpg", "x");
  MakeFile("Dir/.hidden", "x");
  MakeFile("Dir/sub/b.jpg", "x");
  filesystem::create_directory_symlink("sub", "Dir/link-to-directory");
  filesystem::create_symlink("a.jpg", "Dir/link-to-file");
  filesystem::create_symlink("nowhere", "Dir/dead-link");
  const auto sorted = [](auto names) {
    std::sort(names->begin(), names->end());
    return *names;
  };
  using TNames = std::vector<std::string>;
  EXPECT_EQ(sorted(base::ListFiles("dir\\")), (TNames{".hidden", "a.jpg", "dead-link", "link-to-file"}));
  EXPECT_EQ(sorted(base::ListDirectory("dir")),
            (TNames{".hidden", "a.jpg", "dead-link", "link-to-directory", "link-to-file", "sub"}));
  filesystem::create_directory("empty");
  EXPECT_EQ(base::ListFiles("empty"), TNames());
  EXPECT_FALSE(base::ListFiles("absent"));
  EXPECT_FALSE(base::ListFiles("dir/a.jpg"));
}

TEST(FileIdentity, AllSpellingsOfAFileAreOneText) {
  const TScratchDirectory scratch;
  MakeFile("Scripts/Tour.txt", "x");
  filesystem::create_directory_symlink("Scripts", "link");
  const std::string identity = filesystem::canonical("Scripts/Tour.txt").string();
  for (const std::string path : {"Scripts/Tour.txt", "scripts\\tour.txt", "./Scripts/../scripts/tour.txt",
                                 "link/Tour.txt", "link/../scripts//tour.TXT"}) {
    EXPECT_EQ(base::FileIdentity(path), identity) << path;
  }
  EXPECT_EQ(base::FileIdentity(identity), identity);
  EXPECT_NE(base::FileIdentity("absent"), base::FileIdentity("other"));
}

TEST(MakeDirectory, MakesOneDirectorySpeltExactlySoAndTheWritableOneAllThatIsMissing) {
  const TScratchDirectory scratch;
  MakeFile("File", "x");
  filesystem::create_directory("Store");
  EXPECT_TRUE(base::MakeDirectory("Store"));
  EXPECT_TRUE(base::MakeDirectory("store"));
  EXPECT_TRUE(filesystem::is_directory("store"));
  EXPECT_FALSE(base::MakeDirectory("File"));
  EXPECT_FALSE(base::MakeDirectory("absent/inner"));
  EXPECT_FALSE(filesystem::exists("absent"));
  MakeFile("file", "x");
  for (const char* path : {"Store", "a/b/c", "a/b/c", "slash/", "slash/deep/er//", "./dot/.", "a/b/../d"}) {
    EXPECT_TRUE(base::MakeWritableDirectory(path)) << path;
    EXPECT_TRUE(filesystem::is_directory(path)) << path;
    EXPECT_TRUE(filesystem::is_empty(path)) << path;
  }
  for (const char* path : {"file", "file/inner", "/proc/tessimar"}) {
    EXPECT_FALSE(base::MakeWritableDirectory(path)) << path;
  }
}

TEST(Paths, BothSeparatorsCountWhereAPathIsCutOrEnded) {
  for (const auto& [path, name] : std::vector<TLookUp>{{"a.jpg", "a.jpg"},
                                                       {"c:\\dir\\a.jpg", "a.jpg"},
                                                       {"dir/b\\a", "a"},
                                                       {"dir\\b/a.x.y", "a.x.y"},
                                                       {"dir/", ""},
                                                       {"dir\\", ""},
                                                       {"", ""}}) {
    EXPECT_EQ(base::FileNameOf(path), name) << path;
  }
#ifdef _WIN32
  EXPECT_EQ(base::WithTrailingSeparator("dir"), "dir\\");
#else
  EXPECT_EQ(base::WithTrailingSeparator("dir"), "dir/");
#endif
  EXPECT_EQ(base::WithTrailingSeparator("dir/"), "dir/");
  EXPECT_EQ(base::WithTrailingSeparator("dir\\"), "dir\\");
}

TEST(DroppedPath, TheSlashGoesOnlyInFrontOfADriveLetter) {
  for (const auto& [dropped, path] : std::vector<TLookUp>{{"/c:/pictures/a.jpg", "c:/pictures/a.jpg"},
                                                          {"/Z:", "Z:"},
                                                          {"/1:/a", "/1:/a"},
                                                          {"/:", "/:"},
                                                          {"//host/share", "//host/share"},
                                                          {"c:/a", "c:/a"},
                                                          {"/c", "/c"},
                                                          {"", ""}}) {
    EXPECT_EQ(base::DroppedPath(dropped), path) << dropped;
  }
}

TEST(PluginLibrary, TheNameBeginsWithFeatureAndHoldsTheSuffix) {
#ifdef _WIN32
  const std::string suffix = ".dll";
#else
  const std::string suffix = ".so";
#endif
  for (const std::string& name : {"Feature" + suffix, "FeatureX" + suffix, "FeatureX" + suffix + ".bak"}) {
    EXPECT_TRUE(base::IsPluginFileName(name)) << name;
  }
  for (const std::string& name : std::vector<std::string>{"MyFeature" + suffix, "feature" + suffix, "FeatureX.SO",
                                                          "Feature", suffix, "", " Feature" + suffix}) {
    EXPECT_FALSE(base::IsPluginFileName(name)) << name;
  }
  const TScratchDirectory scratch;
  EXPECT_EQ(base::PluginLoadPath("FeatureX.so"), (filesystem::current_path() / "FeatureX.so").string());
}
