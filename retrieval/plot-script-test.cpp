#include "retrieval/plot-script.h"

#include <gtest/gtest.h>

namespace {

TEST(IsSafePlotTitle, RefusesWhatGnuplotWouldRead) {
  for (const char* tag : {"tree", "", "gr\xc3\xbcn", "a'b", "50%", "$x", "a\\b"}) {
    EXPECT_TRUE(IsSafePlotTitle(tag)) << tag;
  }
  for (const char* tag : {"a\"b", "`rm x`", "a\nb", "\x7f", "\t", "a\\"}) {
    EXPECT_FALSE(IsSafePlotTitle(tag)) << tag;
  }
}

}  // namespace
