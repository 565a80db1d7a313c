#include "retrieval/recall-precision-text.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(MeasureRanking, FollowsTheWorkedExample) {
  const TRecallPrecision result = MeasureRanking({true, false, true, false}, 2);
  EXPECT_EQ(FormatCurve(result.curve),
            "0.50000000 1.00000000\r\n0.50000000 0.50000000\r\n1.00000000 0.66666667\r\n1.00000000 0.50000000\r\n");
  EXPECT_DOUBLE_EQ(result.averagePrecision, (1.0 + 2.0 / 3.0) / 4.0);
}

TEST(MeasureRanking, DividesByTheRanksAndNotByTheRelevant) {
  EXPECT_EQ(MeasureRanking({true, true, false, false}, 2).averagePrecision, 0.5);
  EXPECT_EQ(MeasureRanking({true, true, true}, 3).averagePrecision, 1.0);
}

TEST(MeasureRanking, WritesARecallOfNothingWithoutASign) {
  const TRecallPrecision result = MeasureRanking({false, false}, 0);
  EXPECT_EQ(FormatCurve(result.curve), "nan 0.00000000\r\nnan 0.00000000\r\n");
  EXPECT_EQ(result.averagePrecision, 0.0);
}

TEST(WriteEightDecimals, RoundsAsTheCLibraryDoes) {
  std::mt19937_64 random(7);
  std::vector<double> numbers = {0.0,    1.0,       0.5, 5e-9, 5.1e-9, 1e-30, 5e-324, std::nextafter(1.0, 0.0),
                                 0x1p-9, 3 * 0x1p-9};
  for (int i = 0; i < 200000; ++i) {
    const auto total = static_cast<double>(random() % 1000000 + 1);
    numbers.push_back(std::floor(static_cast<double>(random() % 1000000) * total / 1e6) / total);
    // Of these with nine binary places every second one lies exactly between two results.
    numbers.push_back(static_cast<double>(random() % 512) * 0x1p-9);
  }
  for (const double number : numbers) {
    std::array<char, 32> expected;
    std::snprintf(expected.data(), expected.size(), "%.08f", number);
    std::array<char, 10> text;
    ASSERT_EQ(std::string(text.data(), WriteEightDecimals(number, text.data())), expected.data());
  }
}

}  // namespace
