#include "images/var-database.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>
#include <gtest/gtest.h>

#include "images/var-image.h"
#include "tests/support/scratch-directory.h"
#include "tests/support/test-vectors.h"

namespace filesystem = std::filesystem;

namespace {

using TLines = std::vector<std::string>;

TLines Filenames(const TVarDatabase& database) {
  TLines names;
  for (const auto& image : database.GetImages()) {
    names.push_back(image->GetFilename());
  }
  return names;
}

void AddVector(TVarImage& image, const std::string& name) {
  image.GetImageSegment().GetFeatures().Add(MakeVector(name, {2.5}).release());
}

}  // namespace

TEST(TVarDatabase, ShorterNamesComeFirstThenByteOrder) {
  const TScratchDirectory scratch;
  for (const char* name :
       {"im10.jpg", "im2.jpg", "im1.jpg", "aa.jpg", "b.jpg", "B.jpg", "a.jpg", "\xc3\xa9.jpg", "zz.jpg", "9.jpg"}) {
    MakeFile(std::string("Pics/") + name, "no picture");
  }
  TVarDatabase database;
  database.SetLocation("Pics");
  ASSERT_TRUE(database.ScanDirectory());
  // The accented letter has two bytes and the first of them is greater than any letter of ASCII.
  EXPECT_EQ(Filenames(database),
            (TLines{"Pics/9.jpg", "Pics/B.jpg", "Pics/a.jpg", "Pics/b.jpg", "Pics/aa.jpg", "Pics/zz.jpg",
                    "Pics/\xc3\xa9.jpg", "Pics/im1.jpg", "Pics/im2.jpg", "Pics/im10.jpg"}));
}

TEST(TVarDatabase, EveryEntryWithTheFourCharactersInItsNameCountsUnlessADirectory) {
  const TScratchDirectory scratch;
  for (const char* name : {"a.jpg", "x.jpg.bak", ".jpg", "my.jpgs", "IMG.JPG", "b.jpeg", "jpg", "c.png", "d.Jpg"}) {
    MakeFile(std::string("pics/") + name, "");
  }
  MakeFile("pics/sub/inner.jpg", "");
  filesystem::create_directory("pics/folder.jpg");
  filesystem::create_directory_symlink("sub", "pics/link-to-folder.jpg");
  filesystem::create_symlink("c.png", "pics/link.jpg");
  TVarDatabase database;
  database.SetLocation("pics/");
  ASSERT_TRUE(database.ScanDirectory());
  EXPECT_EQ(Filenames(database),
            (TLines{"pics/.jpg", "pics/a.jpg", "pics/my.jpgs", "pics/link.jpg", "pics/x.jpg.bak"}));
}

TEST(TVarDatabase, TheLocationStaysAsTypedWithOneSeparatorAtItsEnd) {
  const TScratchDirectory scratch;
  MakeFile("My Pictures/Sub/a.jpg", "");
  const std::vector<std::pair<std::string, std::string>> cases = {{"My Pictures/Sub", "My Pictures/Sub/"},
                                                                  {"my pictures/sub/", "my pictures/sub/"},
                                                                  {"my pictures\\sub", "my pictures\\sub/"},
                                                                  {"my pictures\\sub\\", "my pictures\\sub\\"}};
  for (const auto& [path, location] : cases) {
    TVarDatabase database;
    database.SetLocation(path);
    EXPECT_EQ(database.GetLocation(), location);
    EXPECT_TRUE(database.ScanDirectory());
    EXPECT_EQ(Filenames(database), TLines{location + "a.jpg"});
  }
}

TEST(TVarDatabase, AScanReplacesTheImagesAndSaysHowMany) {
  const TScratchDirectory scratch;
  MakeFile("pics/a.jpg", "");
  MakeFile("pics/b.jpg", "");
  TVarDatabase database;
  TLines lines;
  database.SetOutput([&lines](const std::string& line) { lines.push_back(line); });
  database.SetLocation("pics");
  EXPECT_TRUE(database.ScanDirectory());
  AddVector(*database.GetImages()[0], "lbp");
  filesystem::remove("pics/b.jpg");
  EXPECT_TRUE(database.ScanDirectory());
  EXPECT_EQ(database.GetDescription(), "Location: \"pics/\", number of images: 1, no features");
  filesystem::remove("pics/a.jpg");
  EXPECT_TRUE(database.ScanDirectory());
  EXPECT_EQ(lines, (TLines{"Database contains 2 images", "Database contains 1 images", "Database contains 0 images"}));

  MakeFile("pics/c.jpg", "");
  EXPECT_TRUE(database.ScanDirectory());
  lines.clear();
  filesystem::remove_all("pics");
  EXPECT_TRUE(database.ScanDirectory());
  EXPECT_EQ(Filenames(database), TLines()) << "the earlier images go whatever happens";
  EXPECT_EQ(lines, TLines()) << "and a location that is not there is passed over in silence";
}

TEST(TVarDatabase, TheDescriptionLooksAtTheFirstImageOnly) {
  const TScratchDirectory scratch;
  MakeFile("X/1.jpg", "");
  MakeFile("X/2.jpg", "");
  TVarDatabase database;
  EXPECT_EQ(database.GetType(), "database");
  EXPECT_EQ(database.GetDescription(), "Location: \"\", number of images: 0");
  database.SetLocation("X");
  ASSERT_TRUE(database.ScanDirectory());
  AddVector(*database.GetImages()[1], "lbp");
  EXPECT_EQ(database.GetDescription(), "Location: \"X/\", number of images: 2, no features");
  AddVector(*database.GetImages()[0], "hsv");
  AddVector(*database.GetImages()[0], "lbp");
  EXPECT_EQ(database.GetDescription(), "Location: \"X/\", number of images: 2, features: hsv, lbp");
}

TEST(TVarDatabase, ACopyIsIndependentAndACopyOntoItselfChangesNothing) {
  const TScratchDirectory scratch;
  MakeFile("pics/a.jpg", "");
  MakeFile("pics/b.jpg", "");
  MakeFile("other/c.jpg", "");
  auto source = std::make_unique<TVarDatabase>();
  source->SetLocation("pics");
  ASSERT_TRUE(source->ScanDirectory());
  AddVector(*source->GetImages()[0], "lbp");
  source->GetImages()[1]->GetTags() = {"sky"};

  const std::unique_ptr<TVar> created = source->CreateNew();
  auto& copy = dynamic_cast<TVarDatabase&>(*created);
  copy.SetLocation("other");
  ASSERT_TRUE(copy.ScanDirectory());
  copy.Assign(source.get());
  AddVector(*source->GetImages()[0], "hsv");
  const TVarImage image;
  for (const TVar* other : std::vector<const TVar*>{&copy, nullptr, &image}) {
    copy.Assign(other);
    EXPECT_EQ(copy.GetDescription(), "Location: \"pics/\", number of images: 2, features: lbp");
  }
  source.reset();
  EXPECT_EQ(Filenames(copy), (TLines{"pics/a.jpg", "pics/b.jpg"}));
  EXPECT_EQ(copy.GetImages()[1]->GetTags(), TLines{"sky"});
  EXPECT_EQ(*copy.GetImages()[0]->GetImageSegment().GetFeatures().Find("lbp")->GetData(), 2.5);
}
