#include "experiments/statistics.h"

#include <vector>

#include <gtest/gtest.h>

TEST(Statistics, AllSignPatternsOfFourQueriesAreCounted) {
  // |T| = 0.6 of a sum of 1.0. With S the sum of the turned ones, a pattern gives |1 - 2 S|: at least 0.6 where S is 0,
  // 0.1, 0.2 (which is T itself, up to rounding), 0.8, 0.9 or 1.0. Six of 16 sets of {0.4, 0.1, 0.2, 0.3} have such a
  // sum.
  EXPECT_EQ(RandomisationTest({0.4, 0.1, -0.2, 0.3}, 1), 6.0 / 16.0);
  EXPECT_EQ(RandomisationTest({-0.4, -0.1, 0.2, -0.3}, 1), 6.0 / 16.0);
  // Both signs of the one query.
  EXPECT_EQ(RandomisationTest({0.25}, 1), 1.0);
  EXPECT_EQ(RandomisationTest({0.0, 0.0, 0.0}, 1), 1.0);
  // All sixteen alike: the observed pattern and its opposite.
  EXPECT_EQ(RandomisationTest(std::vector<double>(16, 0.1), 1), 2.0 / 65536.0);
}

TEST(Statistics, BeyondSixteenQueriesPatternsAreDrawn) {
  // Forty differences, so that two numbers make a draw. The hits were counted by a program in Python with a Mersenne
  // Twister of its own that adds the signed differences one by one.
  std::vector<double> differences;
  differences.reserve(40);
  for (int i = 0; i < 40; ++i) {
    differences.push_back((i * 7919 % 101 - 38) / 1000.0);
  }
  EXPECT_EQ(RandomisationTest(differences, 3), (1.0 + 2037.0) / 100001.0);
  EXPECT_EQ(RandomisationTest(std::vector<double>(17, 0.0), 3), 1.0);
}

TEST(Statistics, BootstrapAgreesWithAnIndependentCalculation) {
  // The same program in Python: 10,000 resamples from seed 7, the means sorted, the 250th from either end.
  TPictureSums pictures;
  pictures.columns = 2;
  pictures.sums = {0.11, 0.05, 0.52, -0.3, 0.37, 0.12, 0.95, 0.4, 0.64, 0.01, 0.23, -0.07, 0.78, 0.33, 0.41, 0.2};
  pictures.topicCounts = {1, 3, 1, 2, 1, 1, 2, 1};
  const std::vector<TInterval> intervals = BootstrapIntervals(pictures, 7);
  ASSERT_EQ(intervals.size(), 2u);
  EXPECT_DOUBLE_EQ(intervals[0].low, 0.23066666666666666);
  EXPECT_DOUBLE_EQ(intervals[0].high, 0.45272727272727276);
  EXPECT_DOUBLE_EQ(intervals[1].low, -0.033571428571428565);
  EXPECT_DOUBLE_EQ(intervals[1].high, 0.15692307692307692);
}

TEST(Statistics, ManyColumnsShareTheResamples) {
  TPictureSums pictures;
  pictures.columns = 70;
  pictures.topicCounts = {1, 2, 1};
  for (const double value : {0.1, 0.8, 0.3}) {
    pictures.sums.insert(pictures.sums.end(), pictures.columns, value);
  }
  const std::vector<TInterval> intervals = BootstrapIntervals(pictures, 1);
  for (const TInterval& interval : intervals) {
    EXPECT_EQ(interval.low, intervals.front().low);
    EXPECT_EQ(interval.high, intervals.front().high);
  }
}

TEST(Statistics, HolmMultipliesTheSmallestMostAndNeverDescends) {
  // 0.005 * 4, 0.01 * 3, 0.03 * 2, then 0.04 * 1, which is below the one before.
  const std::vector<double> adjusted = AdjustHolm({0.01, 0.04, 0.03, 0.005});
  const std::vector<double> expected = {0.03, 0.06, 0.06, 0.02};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_DOUBLE_EQ(adjusted[i], expected[i]);
  }
  EXPECT_EQ(AdjustHolm({0.7, 0.6}), (std::vector<double>{1.0, 1.0}));
  EXPECT_TRUE(AdjustHolm({}).empty());
}
