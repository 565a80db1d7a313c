#include "base/file.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

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

TEST(TFileReader, ReadsFilesOfAnySizeOneAfterTheOtherAndNothingElse) {
  const TScratchDirectory scratch;
  base::TFileReader reader;
  int number = 0;
  for (const std::size_t size : {16, 16, 17, 15, 0, 0, 16, 101, 100, 16}) {
    const std::string content(size, static_cast<char>('a' + number++));
    MakeFile("file", content);
    const bool fits = size <= 100;
    EXPECT_EQ(reader.Read("file", 100), fits ? base::TReadOutcome::kRead : base::TReadOutcome::kTooLarge) << number;
    EXPECT_EQ(reader.GetBytes(), fits ? content : "");
  }
  EXPECT_EQ(reader.Read("file", 15), base::TReadOutcome::kTooLarge)
      << "as long as the one before, but no longer wanted";
  reader.Read("file", 16);
  EXPECT_EQ(reader.Read("absent", 100), base::TReadOutcome::kAbsent);
  EXPECT_EQ(reader.Read(".", 100), base::TReadOutcome::kAbsent);
#ifndef _WIN32
  // A pipe that could give just as many bytes keeps them.
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const int pipe = open("pipe", O_RDWR | O_NONBLOCK);
  ASSERT_EQ(write(pipe, "0123456789abcdef", 16), 16);
  reader.Read("file", 16);
  EXPECT_EQ(reader.Read("pipe", 100), base::TReadOutcome::kAbsent);
  std::string kept(17, ' ');
  EXPECT_EQ(read(pipe, kept.data(), kept.size()), 16);
  close(pipe);
  for (const char* device : {"/dev/null", "/dev/zero"}) {
    reader.Read("file", 16);
    EXPECT_EQ(reader.Read(device, 100), base::TReadOutcome::kAbsent) << device;
  }
#endif
}
