#include "engine/command-history.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ordinary-user.h"
#include "tests/support/scratch-directory.h"

using TLines = std::vector<std::string>;

TEST(TCommandHistory, LinesAreCutAtLineFeedsAndLoseOneCharacter) {
  const TScratchDirectory scratch;
  struct TCase {
    std::string bytes;
    TLines lines;
  };
  const std::vector<TCase> cases = {
      {"", {}},
      {"no end", {}},
      {"one\r\ntwo\r\n", {"one", "two"}},
      {"one\r\nlost", {"one"}},
      {"reset()\nhelp\n", {"reset(", "hel"}},
      {"\n", {""}},
      {"\r\n\r\n", {"", ""}},
      {"\n\na\r\n\n", {"", "", "a", ""}},
      {"x\n", {""}},
      {"a\rb\r\n", {"a\rb"}},
      {std::string("one\r\ntw\0o\r\nthree\r\n", 18), {"one"}},
      {std::string("\0one\r\n", 6), {}},
      {std::string("one\r\n\0", 6), {"one"}},
      {"\xff\xfe\x80\r\n", {"\xff\xfe\x80"}},
      {std::string(1 << 20, 'x') + "\r\nlast\r\n", {std::string(1 << 20, 'x'), "last"}},
  };
  for (const TCase& each : cases) {
    MakeFile("lines.txt", each.bytes);
    TCommandHistory history;
    history.entries = {"from before"};
    history.Load("lines.txt");
    EXPECT_EQ(history.entries, each.lines) << each.bytes.substr(0, 40);
  }
}

TEST(TCommandHistory, AFileThatCannotBeReadLeavesNoLines) {
  const TScratchDirectory scratch;
  std::filesystem::create_directory("directory");
  for (const char* path : {"absent.txt", "directory", ""}) {
    TCommandHistory history;
    history.entries = {"from before"};
    history.Load(path);
    EXPECT_EQ(history.entries, TLines()) << path;
  }
}

TEST(TCommandHistory, EveryLineIsWrittenWithItsEndAndReadBack) {
  const TScratchDirectory scratch;
  MakeFile("history.txt", "something longer that was there before\r\n");
  TCommandHistory history;
  history.entries = {"a = LoadImage( \"X y.JPG\" )", "", "h\xc3\xa9lp\t"};
  history.Save("history.txt");
  EXPECT_EQ(FileBytes("history.txt"), "a = LoadImage( \"X y.JPG\" )\r\n\r\nh\xc3\xa9lp\t\r\n");
  TCommandHistory again;
  again.Load("HISTORY.txt");
  EXPECT_EQ(again.entries, history.entries);

  TCommandHistory().Save("history.txt");
  EXPECT_EQ(FileBytes("history.txt"), "");
  history.Save("absent/history.txt");
  EXPECT_FALSE(std::filesystem::exists("absent"));
}

TEST(TCommandHistory, TellsWhetherItCouldBeReadAndWritten) {
  const TScratchDirectory scratch;
  TCommandHistory history;
  history.Load("absent.txt");
  EXPECT_FALSE(history.IsUnreadable());
  MakeFile("history.txt", "one\r\n");
  std::filesystem::permissions("history.txt", std::filesystem::perms::none);
  {
    const TOrdinaryUser ordinaryUser;
    ASSERT_TRUE(ordinaryUser.isOrdinary);
    EXPECT_FALSE(history.Load("history.txt"));
    EXPECT_TRUE(history.IsUnreadable());
  }
  std::filesystem::permissions("history.txt", std::filesystem::perms::owner_all);
  EXPECT_TRUE(history.Load("history.txt"));
  EXPECT_FALSE(history.IsUnreadable());
  EXPECT_TRUE(history.Save("history.txt"));
  EXPECT_FALSE(history.Save("absent/history.txt"));
}

TEST(TCommandHistory, AssignCopiesTheLines) {
  TCommandHistory source;
  source.entries = {"one", "two"};
  TCommandHistory target;
  target.entries = {"old"};
  target.Assign(source);
  source.entries.clear();
  EXPECT_EQ(target.entries, (TLines{"one", "two"}));
  target.Assign(target);
  EXPECT_EQ(target.entries, (TLines{"one", "two"}));
}
