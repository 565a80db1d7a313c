#include "base/temporary-file.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "base/little-endian.h"
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

TEST(LittleEndian, NumbersAndBlocksHaveTheirBytesInOrder) {
  const TScratchDirectory scratch;
  const double number = -2.5;  // C004000000000000
  const std::string bytes("\xFE\xFF\xFF\xFF\0\0\0\0\0\0\x04\xC0\2\0\0\0hi", 18);
  {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen("numbers", "wb"), &std::fclose);
    EXPECT_TRUE(base::WriteInt32(file.get(), -2) && base::WriteDoubles(file.get(), &number, 1) &&
                base::WriteBlock(file.get(), "hi"));
  }
  EXPECT_EQ(FileBytes("numbers"), bytes);
  const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen("numbers", "rb"), &std::fclose);
  std::int32_t integer = 0;
  double read = 0;
  EXPECT_TRUE(base::ReadInt32(file.get(), integer) && base::ReadDoubles(file.get(), &read, 1));
  EXPECT_EQ(integer, -2);
  EXPECT_EQ(read, number);
  EXPECT_EQ(base::RemainingBytes(file.get()), 6U);
  EXPECT_EQ(base::ReadBlock(file.get()), "hi");
  EXPECT_FALSE(base::ReadInt32(file.get(), integer));
  EXPECT_EQ(integer, -2);
  // A block that claims more than there is: the first four bytes as a size.
  std::rewind(file.get());
  EXPECT_EQ(base::ReadBlock(file.get()), std::nullopt);
}
