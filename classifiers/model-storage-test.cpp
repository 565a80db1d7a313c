#include "classifiers/model-storage.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/file.h"
#include "tests/support/scratch-directory.h"

TEST(ModelStorage, NumbersAndBlocksHaveTheirBytesInOrder) {
  const TScratchDirectory scratch;
  const double number = -2.5;  // C004000000000000
  const std::string bytes("\xFE\xFF\xFF\xFF\0\0\0\0\0\0\x04\xC0\2\0\0\0hi", 18);
  {
    const TFile file(std::fopen("numbers", "wb"));
    EXPECT_TRUE(WriteInt32(file.get(), -2) && WriteDoubles(file.get(), &number, 1) && WriteBlock(file.get(), "hi"));
  }
  EXPECT_EQ(FileBytes("numbers"), bytes);
  const TFile file(std::fopen("numbers", "rb"));
  std::int32_t integer = 0;
  double read = 0;
  EXPECT_TRUE(ReadInt32(file.get(), integer) && ReadDoubles(file.get(), &read, 1));
  EXPECT_EQ(integer, -2);
  EXPECT_EQ(read, number);
  EXPECT_EQ(base::RemainingBytes(file.get()), 6U);
  EXPECT_EQ(ReadBlock(file.get()), "hi");
  EXPECT_FALSE(ReadInt32(file.get(), integer));
  EXPECT_EQ(integer, -2);
  EXPECT_TRUE(ReadDoubles(file.get(), nullptr, 0)) << "nothing is always there";
  EXPECT_FALSE(ReadDoubles(file.get(), &read, 1));
  // A block that claims more than there is: the first four bytes as a size.
  std::rewind(file.get());
  EXPECT_EQ(ReadBlock(file.get()), std::nullopt);
}
