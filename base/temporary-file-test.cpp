#include "base/temporary-file.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/scratch-directory.h"

TEST(TTemporaryFile, LivesAsLongAsItsObject) {
  const TScratchDirectory scratch;
  std::string name;
  {
    const TTemporaryFile temporary("some-");
    name = temporary.GetName();
    EXPECT_TRUE(name.starts_with("some-") && name.ends_with(".dat")) << name;
    EXPECT_EQ(FileBytes(name), "");
    EXPECT_TRUE(temporary.Write(std::string("a\r\n\0b", 5)));
    EXPECT_EQ(temporary.Read(), std::string("a\r\n\0b", 5));
  }
  EXPECT_FALSE(std::filesystem::exists(name));
  const TTemporaryFile nowhere("no/such/directory/");
  EXPECT_FALSE(nowhere.Exists());
  EXPECT_FALSE(nowhere.Write("a"));
  EXPECT_EQ(nowhere.Read(), std::nullopt);
}
