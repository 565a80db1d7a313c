// What an experiment says of files and directories that its user may not read.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "experiments/collection.h"
#include "experiments/run-reader.h"
#include "experiments/truth.h"
#include "tests/support/ordinary-user.h"
#include "tests/support/scratch-directory.h"

namespace {

namespace filesystem = std::filesystem;

class TUnreadable : public testing::Test {
 protected:
  TUnreadable() {
    MakeFile("classes/a/im1.jpg", "");
    MakeFile("closed/a/im1.jpg", "");
    MakeFile("closed.run", "q Q0 d 1 1 r\n");
    MakeFile("classes/locked/im1.jpg", "");
    for (const char* path : {"closed", "closed.run", "classes/locked"}) {
      filesystem::permissions(path, filesystem::perms::none);
    }
  }

  ~TUnreadable() override {
    // Otherwise the scratch directory could not be removed.
    for (const char* path : {"closed", "classes/locked"}) {
      filesystem::permissions(path, filesystem::perms::owner_all);
    }
  }

  const TScratchDirectory directory;
  std::string reason;
  TDamageList damage;
};

TEST_F(TUnreadable, CollectionsAndTheirClasses) {
  const TOrdinaryUser ordinaryUser;
  ASSERT_TRUE(ordinaryUser.isOrdinary);
  EXPECT_FALSE(ReadCollection("closed", reason));
  EXPECT_EQ(reason, "Directory 'closed' cannot be read");
  EXPECT_FALSE(ReadClasses("closed", reason));
  EXPECT_EQ(reason, "Directory 'closed' cannot be read");
  EXPECT_FALSE(ReadClasses("classes", reason));
  EXPECT_EQ(reason, "Directory 'classes/locked' cannot be read");
}

TEST_F(TUnreadable, TruthJudgementsAndRuns) {
  const TOrdinaryUser ordinaryUser;
  ASSERT_TRUE(ordinaryUser.isOrdinary);
  for (const char* path : {"closed", "closed.run"}) {
    EXPECT_FALSE(ReadTruth({}, {path}, damage, reason));
    EXPECT_EQ(reason, std::string("Truth '") + path + "' cannot be read");
  }
  EXPECT_FALSE(ReadQueries({}, "closed.run", damage, reason));
  EXPECT_EQ(reason, "Queries 'closed.run' cannot be read");
  EXPECT_FALSE(ReadJudgements("closed.run", damage, reason));
  EXPECT_EQ(reason, "Judgements 'closed.run' cannot be read");
  EXPECT_FALSE(ReadRun("closed.run", {}, damage, reason));
  EXPECT_EQ(reason, "Run 'closed.run' cannot be read");
  EXPECT_TRUE(damage.empty());
}

TEST(Reading, WhatTheSystemStopsDeliveringIsRefusedAndNotTakenAsTheEnd) {
  // Opens, and fails at the first read: nothing is mapped at its beginning.
  const std::string path = "/proc/self/mem";
  TDamageList damage;
  std::string reason;
  EXPECT_FALSE(ReadJudgements(path, damage, reason));
  EXPECT_EQ(reason, "Judgements '/proc/self/mem' cannot be read");
  EXPECT_FALSE(ReadRun(path, {}, damage, reason));
  EXPECT_EQ(reason, "Run '/proc/self/mem' cannot be read");
}

}  // namespace
