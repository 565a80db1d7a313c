#include "base/guarded-run.h"

#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/file.h"
#include "base/memory.h"
#include "tests/support/scratch-directory.h"

namespace {

constexpr base::TGuardLimits kLimits = {.processorSeconds = 20, .waitedSeconds = 60, .memory = std::size_t{1} << 30};

/// What the answer holds; "(none)" without one.
std::string AnswerTo(const boost::function<bool(std::FILE*)>& work, const base::TGuardLimits& limits = kLimits) {
  const base::TAnswer answer = base::RunGuarded(work, limits);
  if (!answer) {
    return "(none)";
  }
  std::string bytes(base::RemainingBytes(answer.get()).value_or(0), '\0');
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), answer.get()));
  return bytes;
}

bool Say(std::FILE* answer, const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), answer) == text.size();
}

extern "C" void WriteMark(int /*signal*/) {
  close(creat("handled", 0600));
}

TEST(RunGuarded, TheAnswerComesBackWhateverItsLength) {
  for (const std::size_t size : {0, 5, 5000000}) {
    const std::string text(size, 'x');
    EXPECT_TRUE(AnswerTo([&](std::FILE* answer) { return Say(answer, text); }) == text) << size;
  }
}

TEST(RunGuarded, WorkThatEndsBadlyHasNoAnswerAndLeavesNothing) {
  const TScratchDirectory scratch;
  static bool isWatched = true;
  std::atexit([] {
    if (isWatched) {
      close(creat("farewell", 0600));
    }
  });
  const std::vector<boost::function<void()>> ends = {[] { std::raise(SIGSEGV); }, [] { std::abort(); },
                                                     [] { std::raise(SIGKILL); }, [] { std::exit(EXIT_SUCCESS); },
                                                     [] { throw std::runtime_error("no"); }};
  testing::internal::CaptureStderr();
  for (const auto& end : ends) {
    EXPECT_EQ(AnswerTo([&end](std::FILE* answer) {
                std::fputs("to be seen by nobody", stderr);
                end();
                return Say(answer, "reached");
              }),
              "(none)");
  }
  EXPECT_EQ(AnswerTo([](std::FILE* answer) { return Say(answer, "half") && false; }), "(none)");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  isWatched = false;
  EXPECT_TRUE(std::filesystem::is_empty(scratch.GetPath())) << "a core file, or a handler of exit() that ran";
}

TEST(RunGuarded, NeitherKeysNorHandlersOfTheProgramReachTheWork) {
  const TScratchDirectory scratch;
  const auto before = std::signal(SIGSEGV, WriteMark);
  const auto beforeInterrupt = std::signal(SIGINT, WriteMark);
  EXPECT_EQ(AnswerTo([](std::FILE*) { return std::raise(SIGSEGV) == 0; }), "(none)");
  EXPECT_EQ(AnswerTo([](std::FILE* answer) { return std::raise(SIGINT) == 0 && Say(answer, "done"); }), "done");
  std::signal(SIGINT, beforeInterrupt);
  std::signal(SIGSEGV, before);
  EXPECT_FALSE(std::filesystem::exists("handled"));
}

TEST(RunGuarded, NobodyWaitsForWorkThatNeverEnds) {
  base::TGuardLimits limits = kLimits;
  limits.processorSeconds = 1;
  EXPECT_EQ(AnswerTo(
                [](std::FILE*) {
                  for (volatile int i = 0;;) {
                    i = i + 1;
                  }
                  return true;
                },
                limits),
            "(none)");
  limits.waitedSeconds = 1;
  EXPECT_EQ(AnswerTo([](std::FILE*) { return pause() == 0; }, limits), "(none)");
}

TEST(RunGuarded, MemoryHasAnEnd) {
  if (!base::MappedMemory()) {
    GTEST_SKIP() << "memory is not limited on this platform or under AddressSanitizer";
  }
  base::TGuardLimits limits = kLimits;
  const auto take = [](std::FILE* answer) {
    const std::vector<char> block(std::size_t{300} << 20);
    return Say(answer, block[12345] == 0 ? "got it" : "");
  };
  EXPECT_EQ(AnswerTo(take, limits), "got it");
  limits.memory = std::size_t{200} << 20;
  EXPECT_EQ(AnswerTo(take, limits), "(none)");
  // Nor does it grow by what was freed before.
  base::KeepFreedMemory();
  std::make_unique<std::vector<char>>(std::size_t{400} << 20).reset();
  EXPECT_EQ(AnswerTo(take, limits), "(none)");
}

}  // namespace
