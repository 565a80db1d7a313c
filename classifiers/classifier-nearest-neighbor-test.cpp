#include "classifiers/classifier-nearest-neighbor.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
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

TEST(TClassifierNearestNeighbor, ScoresByTheNearestOfBothClasses) {
  const auto score = [](const TClassifier& classifier, const TValues& values) {
    return classifier.Score(*Vector(values));
  };
  TClassifierNearestNeighbor nearest;
  EXPECT_EQ(score(nearest, {0, 0}), 0.0);
  Teach(nearest, {{0, 0}, {9, 9}}, {});
  EXPECT_EQ(score(nearest, {5, 5}), 1.0) << "there is no negative example";
  Teach(nearest, {}, {{2, 2}, {9, 9}});
  EXPECT_EQ(score(nearest, {1, 1}), 0.0);
  // Distances 1 and 3, then 3 and 1.
  EXPECT_EQ(score(nearest, {0, 1}), 0.5);
  EXPECT_EQ(score(nearest, {2, 1}), -0.5);
  EXPECT_EQ(score(nearest, {0, 0}), 1.0);
  EXPECT_EQ(score(nearest, {9, 9}), 0.0) << "both distances are 0";
  EXPECT_EQ(score(nearest, {1, 1, 1}), 0.0);
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

namespace {

/// The answer by comparing with all examples, one after the other.
double PlainAnswer(const TClassifierNearestNeighbor& nearest, const TFeatureVector& query) {
  double best = std::numeric_limits<double>::max();
  double answer = 0.0;
  const auto compare = [&](const TFeatureVectorList& list, double result) {
    for (const TFeatureVector* example : list.GetItems()) {
      double distance = 0.0;
      for (std::uint32_t i = 0; i < query.GetLength() && example->GetLength() == query.GetLength(); ++i) {
        distance += std::fabs(query.GetData()[i] - example->GetData()[i]);
      }
      if (example != &query && example->GetLength() == query.GetLength() && distance < best) {
        best = distance;
        answer = result;
      }
    }
  };
  compare(nearest.GetPositiveExamples(), 1.0);
  compare(nearest.GetNegativeExamples(), -1.0);
  return answer;
}

}  // namespace

TEST(TClassifierNearestNeighbor, AnswersAmongLongExamplesAsAPlainSearchDoes) {
  std::mt19937 random(5);
  int positives = 0;
  int asked = 0;
  // Numbers of few values make ties between the classes; others differ in the last bits of their sums alone.
  for (const int kind : {0, 1, 2, 3}) {
    const auto number = [&] {
      const auto bits = static_cast<double>(random());
      return kind == 0   ? static_cast<double>(random() % 3)
             : kind == 1 ? std::ldexp(bits, -32) - 0.5
             : kind == 2 ? 1e15 + static_cast<double>(random() % 2)
                         : std::ldexp(bits, static_cast<int>(random() % 80));
    };
    const auto row = [&] {
      TValues values(kind == 0 ? 64 : 65 + kind);
      std::generate(values.begin(), values.end(), number);
      return values;
    };
    TClassifierNearestNeighbor nearest;
    for (int round = 0; round < 4; ++round) {
      for (int i = 0; i < 40; ++i) {
        const TValues values = row();
        TValues turned = values;
        std::rotate(turned.begin(), turned.begin() + i % 7, turned.end());
        // Each second pair has one example in both classes, equal or with the same numbers in another order.
        Teach(nearest, {values}, {i % 2 == 0 ? turned : row()});
      }
      for (int i = 0; i < 50; ++i) {
        const auto query = Vector(i < 40 ? row() : TValues(row().size(), std::ldexp(-1.0, 40 * (i - 40))));
        const double expected = PlainAnswer(nearest, *query);
        ASSERT_EQ(nearest.Classify(*query), expected) << kind << ", " << round << ", " << i;
        positives += expected > 0 ? 1 : 0;
        ++asked;
      }
      // The examples ask too, and do not find themselves.
      for (const TFeatureVector* example : nearest.GetNegativeExamples().GetItems()) {
        ASSERT_EQ(nearest.Classify(*example), PlainAnswer(nearest, *example));
      }
    }
  }
  EXPECT_GT(positives, asked / 4);
  EXPECT_LT(positives, asked * 9 / 10);
}

TEST(TClassifierNearestNeighbor, KnowsOfEveryChangeAtTheNextQuestion) {
  TClassifierNearestNeighbor nearest;
  const auto row = [](double value) { return TValues(64, value); };
  const auto fill = [&](double positive, double negative) {
    for (int i = 0; i < 20; ++i) {
      Teach(nearest, {row(positive + i)}, {row(negative + i)});
    }
  };
  fill(0, 100);
  EXPECT_EQ(Answer(nearest, row(50)), 1.0);
  Teach(nearest, {}, {row(49)});
  EXPECT_EQ(Answer(nearest, row(50)), -1.0);
  const std::string bytes = Stored(nearest);
  nearest.Clear();
  EXPECT_EQ(Answer(nearest, row(50)), 0.0);
  // As many as before, most likely in the same places.
  fill(100, 0);
  Teach(nearest, {row(49)}, {});
  EXPECT_EQ(Answer(nearest, row(51)), 1.0);
  ASSERT_TRUE(Restore(nearest, bytes));
  EXPECT_EQ(Answer(nearest, row(51)), -1.0);
  EXPECT_EQ(Answer(nearest, row(0)), 1.0);
  // One of another length, or one that is not finite, takes no part and disturbs no other.
  for (const TValues& strange : {TValues(65, 51.0), row(INFINITY), row(NAN)}) {
    Teach(nearest, {strange}, {});
    EXPECT_EQ(Answer(nearest, row(51)), -1.0);
    EXPECT_EQ(Answer(nearest, row(NAN)), 0.0);
    EXPECT_EQ(Answer(nearest, row(-INFINITY)), 0.0);
  }
  EXPECT_EQ(Answer(nearest, TValues(65, 51.0)), 1.0);
  // The caller's own vectors may change without a word.
  TClassifierNearestNeighbor ours;
  ours.SetCopyExamples(false);
  std::vector<std::unique_ptr<TFeatureVector>> vectors;
  for (int i = 0; i < 40; ++i) {
    vectors.push_back(Vector(row(i)));
    ours.AddPositiveExample(vectors.back().get());
  }
  vectors.push_back(Vector(row(1000)));
  ours.AddNegativeExample(vectors.back().get());
  EXPECT_EQ(Answer(ours, row(50)), 1.0);
  std::fill_n(vectors.back()->GetData(), 64, 50.0);
  EXPECT_EQ(Answer(ours, row(50)), -1.0);
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
