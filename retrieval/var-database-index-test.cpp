#include "retrieval/var-database-index.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "tests/support/scratch-directory.h"

namespace {

using TLines = std::vector<std::string>;

std::vector<int> Order(const TVarDatabaseIndex& index) {
  std::vector<int> order;
  for (const TDatabaseIndexEntry& entry : index.GetEntries()) {
    order.push_back(entry.imageIndex);
  }
  return order;
}

/// A database of the files in the directory "pics".
std::unique_ptr<TVarDatabase> ScannedPictures(const std::string& name) {
  auto database = std::make_unique<TVarDatabase>();
  database->SetName(name);
  database->SetLocation("pics");
  database->ScanDirectory();
  return database;
}

/// A store with the database "db" of the three files 0.jpg, 1.jpg, 2.jpg and the image "q".
class TVarDatabaseIndexTest : public testing::Test {
 protected:
  TVarDatabaseIndexTest() {
    for (const char* name : {"pics/0.jpg", "pics/1.jpg", "pics/2.jpg"}) {
      MakeFile(name, "");
    }
    store.Add(ScannedPictures("db"));
    auto image = std::make_unique<TVarImage>();
    image->SetName("q");
    store.Add(std::move(image));
  }

  /// What FindDatabase says about an index of these image numbers, made of the files as a database of that name:
  /// "found", or the reason.
  std::string Found(const std::string& databaseName, const std::vector<int>& imageNumbers) const {
    TVarDatabaseIndex index;
    index.Begin(*ScannedPictures(databaseName), "");
    for (const int number : imageNumbers) {
      index.AddEntry(number, 0.0);
    }
    std::string reason;
    std::string otherReason;
    const TVarDatabase* database = index.FindDatabase(store, reason);
    EXPECT_EQ(index.FindTop(store, 2, otherReason).has_value(), database != nullptr);
    EXPECT_EQ(otherReason, reason);
    return database == nullptr ? reason : database == store.Find("db") ? "found" : "found another";
  }

  const TScratchDirectory scratch;
  TVarList store;
};

}  // namespace

TEST(TVarDatabaseIndex, AssignCopiesEntriesAndNames) {
  auto source = std::make_unique<TVarDatabaseIndex>();
  source->SetName("a");
  TVarDatabase database;
  database.SetName("db");
  source->Begin(database, "q.jpg");
  source->AddEntry(2, 0.5);
  source->AddEntry(0, 1.5);
  const std::unique_ptr<TVar> created = source->CreateNew();
  auto& copy = dynamic_cast<TVarDatabaseIndex&>(*created);
  EXPECT_TRUE(copy.GetEntries().empty());
  copy.SetName("b");
  copy.AddEntry(9, 9.0);
  copy.Assign(source.get());
  source.reset();
  const TVarImage image;
  for (const TVar* other : std::vector<const TVar*>{&copy, nullptr, &image}) {
    copy.Assign(other);
    EXPECT_EQ(copy.GetName(), "b");
    EXPECT_EQ(Order(copy), (std::vector<int>{2, 0}));
    EXPECT_EQ(copy.GetEntries()[1].distance, 1.5);
    EXPECT_EQ(copy.GetDatabaseName(), "db");
    EXPECT_EQ(copy.GetImageName(), "q.jpg");
  }
}

TEST_F(TVarDatabaseIndexTest, TheDatabaseMustStandInTheStoreAndFit) {
  EXPECT_EQ(Found("db", {2, 0, 1}), "found");
  EXPECT_EQ(Found("gone", {2, 0, 1}), "Database 'gone' not found");
  EXPECT_EQ(Found("", {}), "Database '' not found");
  EXPECT_EQ(Found("q", {0}), "Database 'q' not found") << "a variable of another type";
  const std::string mismatch = "Index does not match database 'db'";
  EXPECT_EQ(Found("db", {}), mismatch);
  EXPECT_EQ(Found("db", {0, 1}), mismatch);
  EXPECT_EQ(Found("db", {0, 1, 2, 0}), mismatch);
  EXPECT_EQ(Found("db", {0, 1, 3}), mismatch);
  EXPECT_EQ(Found("db", {-1, 0, 1}), mismatch);
  MakeFile("pics/3.jpg", "");
  EXPECT_EQ(Found("db", {2, 0, 1}), mismatch) << "of a file that the database in the store has not";
}

TEST_F(TVarDatabaseIndexTest, TheTopResultsFollowTheRanking) {
  TVarDatabaseIndex index;
  index.Begin(*ScannedPictures("db"), "");
  index.AddEntry(0, 3.0);
  index.AddEntry(1, 0.12345678);
  index.AddEntry(2, std::numeric_limits<double>::infinity());
  index.SortEntries();
  auto& tagged = *dynamic_cast<TVarDatabase&>(*store.Find("db")).GetImages()[1];
  tagged.GetTags() = {"tree", "sky", "tree"};
  std::string reason;
  const auto descriptions = [&](std::size_t count) {
    TLines lines;
    const auto top = index.FindTop(store, count, reason);
    for (const TTopResult& result : top.value()) {
      EXPECT_NE(result.description.find(result.filename), std::string::npos);
      lines.push_back(result.description);
    }
    return lines;
  };
  const TLines all = {"Rank 1\npics/1.jpg\nDistance 0.123457\nTags: tree, sky", "Rank 2\npics/0.jpg\nDistance 3",
                      "Rank 3\npics/2.jpg\nDistance inf"};
  EXPECT_EQ(descriptions(2), TLines(all.begin(), all.begin() + 2));
  EXPECT_EQ(descriptions(36), all);
  EXPECT_EQ(descriptions(0), TLines());
  EXPECT_EQ(reason, "");
  store.Remove("db");
  EXPECT_FALSE(index.FindTop(store, 2, reason).has_value());
  EXPECT_EQ(reason, "Database 'db' not found");
}
