#include "base/file.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/scratch-directory.h"

TEST(TFile, BytesComeBackAsTheyWereWritten) {
  const TScratchDirectory scratch;
  // Across the 65,536 bytes of a read block, with all that a text mode would change.
  std::string bytes("\0\r\n\x1a\xff\n\r", 7);
  while (bytes.size() < 65536 * 2 + 1) {
    bytes += bytes;
  }
  for (const std::string& content : {std::string(), std::string(65536, 'x'), bytes}) {
    ASSERT_TRUE(base::WriteFile("file.bin", content));
    EXPECT_EQ(FileBytes("file.bin"), content);
    EXPECT_EQ(base::ReadFile("file.bin"), content);
  }
}

TEST(TFile, WritingReplacesALongerFile) {
  const TScratchDirectory scratch;
  MakeFile("file.txt", "a long first content");
  ASSERT_TRUE(base::WriteFile("file.txt", "short"));
  EXPECT_EQ(FileBytes("file.txt"), "short");
}

TEST(TFile, ReadingFindsTheFileInAnyCaseAndWritingDoesNot) {
  const TScratchDirectory scratch;
  MakeFile("Dir/Notes.TXT", "kept");
  EXPECT_EQ(base::ReadFile("dir\\notes.txt"), "kept");
  ASSERT_TRUE(base::WriteFile("Dir/notes.txt", "new"));
  EXPECT_EQ(FileBytes("Dir/Notes.TXT"), "kept");
  EXPECT_EQ(FileBytes("Dir/notes.txt"), "new");
}

TEST(TFile, WhatCannotBeReadOrWrittenIsReported) {
  const TScratchDirectory scratch;
  std::filesystem::create_directory("directory");
  EXPECT_FALSE(base::ReadFile("absent"));
  EXPECT_FALSE(base::ReadFile(""));
  EXPECT_FALSE(base::ReadFile("directory"));
  EXPECT_FALSE(base::WriteFile("directory", "x"));
  EXPECT_FALSE(base::WriteFile("absent/file", "x"));
  EXPECT_FALSE(base::WriteFile("", "x"));
  if (std::filesystem::exists("/dev/full")) {
    EXPECT_FALSE(base::WriteFile("/dev/full", "x")) << "a full disk shows only when the file is closed";
  }
}
