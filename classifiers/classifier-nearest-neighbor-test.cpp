#include "classifiers/classifier-nearest-neighbor.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/classifier-probes.h"

TEST(TClassifierNearestNeighbor, AnswersWithTheClassOfTheNearestAndThePositivesWinTies) {
  TClassifierNearestNeighbor nearest;
  Teach(nearest, {{0, 0}}, {{2, 2}});
  EXPECT_EQ(Answer(nearest, {1, 1}), 1.0);
  EXPECT_EQ(Answer(nearest, {2, 1}), -1.0);
  EXPECT_EQ(Answer(nearest, {2, 1, 0}), 0.0);
  EXPECT_EQ(Answer(nearest, {}), 0.0);
  nearest.Train();
  EXPECT_EQ(ValuesOf(*nearest.GetNegativeExamples().GetItems()[0]), (TValues{2, 2}));
  EXPECT_EQ(Answer(nearest, {NAN, 1}), 0.0);
}

TEST(TClassifierNearestNeighbor, AnExampleDoesNotFindItselfButItsEqualDoes) {
  TClassifierNearestNeighbor nearest;
  nearest.SetCopyExamples(false);
  const auto example = Vector({1, 2});
  nearest.AddNegativeExample(example.get());
  EXPECT_EQ(nearest.Classify(*example), 0.0);
  EXPECT_EQ(Answer(nearest, {1, 2}), -1.0);
  const auto other = Vector({100, 100});
  nearest.AddPositiveExample(other.get());
  EXPECT_EQ(nearest.Classify(*example), 1.0);
}

TEST(TClassifierNearestNeighbor, AgreesWithAPlainSearchAmongManyExamples) {
  std::mt19937 random(3);
  const auto make = [&](std::size_t count) {
    std::vector<TValues> rows(count, TValues(7));
    for (TValues& row : rows) {
      std::generate(row.begin(), row.end(), [&] { return static_cast<double>(random() % 10007); });
    }
    return rows;
  };
  const auto positives = make(131);
  const auto negatives = make(197);
  TClassifierNearestNeighbor nearest;
  Teach(nearest, positives, negatives);
  const auto least = [](const std::vector<TValues>& rows, const TValues& query) {
    double best = HUGE_VAL;
    for (const TValues& row : rows) {
      best = std::min(best, std::transform_reduce(row.begin(), row.end(), query.begin(), 0.0, std::plus(),
                                                  [](double a, double b) { return std::fabs(a - b); }));
    }
    return best;
  };
  int found = 0;
  for (const TValues& query : make(200)) {
    const bool isPositive = least(positives, query) <= least(negatives, query);
    EXPECT_EQ(Answer(nearest, query), isPositive ? 1.0 : -1.0);
    found += isPositive ? 1 : 0;
  }
  EXPECT_GT(found, 40);
  EXPECT_LT(found, 160);
}

TEST(TClassifierNearestNeighbor, StoresItsExamplesFieldByField) {
  TClassifierNearestNeighbor nearest;
  EXPECT_EQ(Stored(nearest), std::string(12, '\0'));
  Teach(nearest, {{1, 2, 3}, {4, 5, 6}}, {});
  const std::string two = Int(3) + Int(2) + Doubles({1, 2, 3, 4, 5, 6}) + Int(0);
  ASSERT_EQ(two.size(), 60U);
  EXPECT_EQ(Stored(nearest), two);

  // Loading takes the place of the examples before, which were the caller's.
  TClassifierNearestNeighbor loaded;
  loaded.SetCopyExamples(false);
  const auto ours = Vector({9});
  loaded.AddPositiveExample(ours.get());
  loaded.AddNegativeExample(ours.get());
  const std::string none = Int(1) + Int(0) + Int(2) + Doubles({7, 8});
  ASSERT_TRUE(Restore(loaded, none, "more"));
  EXPECT_EQ(Stored(loaded), none);
  EXPECT_EQ(ValuesOf(*ours), (TValues{9}));
  EXPECT_TRUE(loaded.GetCopyExamples());
  EXPECT_EQ(loaded.GetNegativeExamples().GetItems()[1]->GetName(), "");
  EXPECT_FALSE(loaded.GetNormalize());

  // Every vector is written with the elements of the first; one that has fewer cannot be.
  nearest.AddNegativeExample(Vector({7, 8, 9, 10}).get());
  EXPECT_EQ(Stored(nearest), two.substr(0, 56) + Int(1) + Doubles({7, 8, 9}));
  nearest.AddNegativeExample(Vector({7}).get());
  const TFile file = BinaryFile();
  EXPECT_FALSE(nearest.Save(file.get()));
  EXPECT_EQ(std::ftell(file.get()), 0);
}

TEST(TClassifierNearestNeighbor, ADamagedFileLeavesTheExamples) {
  TClassifierNearestNeighbor nearest;
  Teach(nearest, kPositives, kNegatives);
  const std::string sound = Stored(nearest);
  for (std::size_t size = 0; size < sound.size(); ++size) {
    ASSERT_FALSE(Restore(nearest, sound.substr(0, size))) << size;
  }
  const std::string hostile[] = {Int(-1) + Int(0) + Int(0),           Int(0) + Int(-1) + Int(0),
                                 Int(0) + Int(0) + Int(INT32_MAX),    Int(0) + Int(INT32_MAX) + Int(0),
                                 Int(1) + Int(INT32_MAX) + Int(0),    Int(1 << 24) + Int(1) + Doubles({1}),
                                 Int((1 << 24) + 1) + Int(0) + Int(0)};
  for (const std::string& bytes : hostile) {
    EXPECT_FALSE(Restore(nearest, bytes));
    EXPECT_EQ(Stored(nearest), sound);
  }
}
