#include "base/file.h"

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "tests/support/ordinary-user.h"
#include "tests/support/scratch-directory.h"

namespace filesystem = std::filesystem;

namespace {

bool Replace(const std::string& path, const std::string& bytes) {
  return base::ReplaceFile(path, bytes.data(), bytes.size());
}

/// The names of all that stands in a directory, hidden or not.
std::set<std::string> Names(const char* directory) {
  std::set<std::string> names;
  for (const auto& entry : filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

/// What reading says of a file, and that it gives nothing where it fails.
base::TReadOutcome Outcome(const std::string& path) {
  std::string bytes = "before";
  const base::TReadOutcome outcome = base::ReadFile(path, bytes);
  EXPECT_TRUE(outcome == base::TReadOutcome::kRead || bytes.empty()) << path;
  EXPECT_EQ(base::ReadFile(path).has_value(), outcome == base::TReadOutcome::kRead) << path;
  return outcome;
}

}  // namespace

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

TEST(TFile, ReadingFindsTheFileInAnyCaseAndWritingDoesNot) {
  const TScratchDirectory scratch;
  MakeFile("Dir/Notes.TXT", "kept");
  EXPECT_EQ(base::ReadFile("dir\\notes.txt"), "kept");
  ASSERT_TRUE(base::WriteFile("Dir/notes.txt", "new"));
  ASSERT_TRUE(Replace("Dir/no\\tes", "new"));
  EXPECT_EQ(FileBytes("Dir/Notes.TXT"), "kept");
  EXPECT_EQ(FileBytes("Dir/notes.txt"), "new");
  EXPECT_EQ(Names("Dir"), (std::set<std::string>{"Notes.TXT", "notes.txt", "no\\tes"}));
}

TEST(TFile, AbsentAndUnreadableAreToldApart) {
  const TScratchDirectory scratch;
  using enum base::TReadOutcome;
  filesystem::create_directory("directory");
  for (const char* absent : {"absent", "", "directory", "absent/file", "/dev/zero"}) {
    EXPECT_EQ(Outcome(absent), kAbsent) << absent;
  }
#ifdef __linux__
  EXPECT_EQ(Outcome("/proc/self/mem"), kUnreadable) << "opens, but has nothing at its start";
  EXPECT_EQ(Outcome("/proc/self/status"), kRead);
  EXPECT_FALSE(base::ReadFile("/proc/self/status")->empty()) << "of no size, but with a content";
#endif
#ifndef _WIN32
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  EXPECT_EQ(Outcome("pipe"), kAbsent);
  MakeFile("secret", "x");
  MakeFile("closed/file", "x");
  filesystem::permissions("secret", filesystem::perms::none);
  filesystem::permissions("closed", filesystem::perms::none);
  const TOrdinaryUser user;
  if (user.isOrdinary) {
    EXPECT_EQ(Outcome("secret"), kUnreadable);
    EXPECT_EQ(base::TFileReader().Read("secret", 100), kUnreadable);
    EXPECT_EQ(Outcome("closed/file"), kAbsent) << "what it is cannot be known";
  }
#endif
}

TEST(TFile, ReplacingLeavesNothingBesideAndKeepsLinksAndRights) {
  const TScratchDirectory scratch;
  MakeFile("there/file.txt", "a long first content");
  filesystem::permissions("there/file.txt", filesystem::perms{0640});
  filesystem::create_directory("here");
  filesystem::create_symlink("../there/link", "here/link");
  filesystem::create_symlink(filesystem::absolute("there/file.txt"), "there/link");
  filesystem::create_symlink("../there/new.txt", "here/dangling");
  ASSERT_TRUE(Replace("here/link", "short"));
  ASSERT_TRUE(Replace("here/dangling", "made"));
  EXPECT_TRUE(filesystem::is_symlink("here/link") && filesystem::is_symlink("here/dangling"));
  EXPECT_EQ(FileBytes("there/file.txt"), "short");
  EXPECT_EQ(FileBytes("there/new.txt"), "made");
  EXPECT_EQ(filesystem::status("there/file.txt").permissions(), filesystem::perms{0640});
  EXPECT_EQ(Names("there"), (std::set<std::string>{"file.txt", "link", "new.txt"}));
  EXPECT_EQ(Names("here"), (std::set<std::string>{"link", "dangling"}));
  // As long as a name can be: the file beside it has a name of its own.
  const std::string longest(255, 'n');
  EXPECT_TRUE(Replace(longest, "x"));
  EXPECT_EQ(FileBytes(longest), "x");
}

TEST(TFile, WhatMustNotBeReplacedIsLeftAlone) {
  const TScratchDirectory scratch;
  filesystem::create_directory("directory");
  filesystem::create_symlink("circle", "circle");
  MakeFile("protected", "kept");
  filesystem::permissions("protected", filesystem::perms{0444});
#ifndef _WIN32
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  filesystem::create_symlink("pipe", "link-to-pipe");
  const int reader = open("pipe", O_RDONLY | O_NONBLOCK);
#endif
  const std::set<std::string> names = Names(".");
  for (const char* path : {"directory", "directory/", "absent/file", "", "circle", "pipe", "link-to-pipe", "/dev/null",
                           "protected/file"}) {
    EXPECT_FALSE(Replace(path, "x")) << path;
  }
  for (const char* path : {"directory", "absent/file", "", "circle"}) {
    EXPECT_FALSE(base::TNamedOutput(path).IsOpen()) << path;
    EXPECT_FALSE(base::WriteFile(path, "x")) << path;
  }
  if (filesystem::exists("/dev/full")) {
    EXPECT_FALSE(base::WriteFile("/dev/full", "x"));
  }
  EXPECT_EQ(Names("."), names);
#ifndef _WIN32
  close(reader);
  filesystem::permissions(".", filesystem::perms{0777});
  const TOrdinaryUser user;
  if (user.isOrdinary) {
    EXPECT_FALSE(Replace("protected", "x"));
    EXPECT_FALSE(base::TNamedOutput("protected").IsOpen());
  }
  EXPECT_EQ(FileBytes("protected"), "kept");
#endif
}

#ifndef _WIN32
TEST(TNamedOutput, APipeIsKeptOpenForItsReaderAndASlowReaderLosesNothing) {
  const TScratchDirectory scratch;
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  EXPECT_FALSE(base::TNamedOutput("pipe").IsOpen()) << "nobody reads";
  // More than a pipe holds.
  std::string bytes;
  for (int i = 0; bytes.size() < 1000000; ++i) {
    bytes += std::to_string(i);
  }
  const pid_t child = fork();
  if (child == 0) {
    _exit(std::system("sleep 0.1; cat > copy < pipe") == 0 ? 0 : 1);
  }
  // The reader's shell opens the pipe and waits for the first writer.
  const int writer = open("pipe", O_WRONLY);
  base::TNamedOutput output("pipe");
  ASSERT_TRUE(output.IsOpen());
  close(writer);
  EXPECT_TRUE(output.Write(bytes));
  EXPECT_FALSE(output.Write(bytes)) << "an output is written once";
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(FileBytes("copy"), bytes);
}
#endif

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
