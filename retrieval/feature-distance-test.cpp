#include "retrieval/feature-distance.h"

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "images/feature-vector-list.h"
#include "tests/support/test-vectors.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using TNumbers = std::vector<double>;
using TVectors = std::vector<std::pair<std::string, TNumbers>>;

void Fill(TFeatureVectorList& list, const TVectors& vectors) {
  for (const auto& [name, numbers] : vectors) {
    list.Add(MakeVector(name, numbers).release());
  }
}

TNumbers Distances(const TVectors& query, const std::vector<std::string>& names, const std::vector<TVectors>& images) {
  TFeatureVectorList queryList;
  Fill(queryList, query);
  std::vector<std::unique_ptr<TFeatureVectorList>> owned;
  std::vector<const TFeatureVectorList*> lists;
  for (const TVectors& image : images) {
    owned.push_back(std::make_unique<TFeatureVectorList>());
    Fill(*owned.back(), image);
    lists.push_back(owned.back().get());
  }
  return GetDistances(queryList, names, lists);
}

}  // namespace

TEST(GetDistances, AbsoluteDifferencesOfAllNamedVectorsAreSummed) {
  const TVectors query = {{"hsv", {1.0, 2.0}}, {"lbp", {-1.0, 0.5, 4.0}}, {"other", {100.0}}};
  const std::vector<TVectors> images = {
      query,
      {{"hsv", {2.0, 0.0}}, {"lbp", {1.0, 0.5, 3.5}}, {"other", {0.0}}},
      {{"lbp", {-1.0, 0.5, 4.0}}, {"hsv", {1.0, 6.25}}},
  };
  EXPECT_EQ(Distances(query, {"hsv", "lbp"}, images), (TNumbers{0.0, 1.0 + 2.0 + 2.0 + 0.5, 4.25}));
  EXPECT_EQ(Distances(query, {"lbp"}, images), (TNumbers{0.0, 2.5, 0.0}));
  EXPECT_EQ(Distances(query, {}, images), (TNumbers{0.0, 0.0, 0.0}));
  EXPECT_EQ(Distances(query, {"hsv"}, {}), TNumbers());
}

TEST(GetDistances, TheQuerySetsTheLength) {
  EXPECT_EQ(Distances({{"f", {1.0, 1.0}}}, {"f"}, {{{"f", {2.0, 3.0, 1000.0}}}, {{"f", {2.0}}}, {{"f", {}}}}),
            (TNumbers{3.0, kInfinity, kInfinity}));
  EXPECT_EQ(Distances({{"f", {}}}, {"f"}, {{{"f", {5.0}}}, {{"f", {}}}, {}}), (TNumbers{0.0, 0.0, kInfinity}));
}

TEST(GetDistances, WhatCannotBeComparedIsInfinitelyFarAndHarmsNoOther) {
  const TVectors query = {{"a", {1.0}}, {"b", {2.0}}};
  const std::vector<TVectors> images = {
      {},
      {{"a", {1.0}}},
      {{"b", {2.0}}},
      {{"A", {1.0}}, {"b", {2.0}}},
      {{"a", {kNaN}}, {"b", {2.0}}},
      {{"a", {1.0}}, {"b", {kNaN}}},
      {{"a", {-kInfinity}}, {"b", {2.0}}},
      {{"a", {4.0}}, {"b", {2.0}}},
  };
  EXPECT_EQ(Distances(query, {"a", "b"}, images),
            (TNumbers{kInfinity, kInfinity, kInfinity, kInfinity, kInfinity, kInfinity, kInfinity, 3.0}));
  EXPECT_EQ(Distances({{"a", {kNaN}}}, {"a"}, {{{"a", {1.0}}}, {}}), (TNumbers{kInfinity, kInfinity}));
  EXPECT_EQ(Distances({{"a", {kInfinity}}}, {"a"}, {{{"a", {kInfinity}}}}), TNumbers{kInfinity});
}

TEST(GetDistances, TheSumRunsFromTheFirstElementToTheLast) {
  // 2^53 + 1 rounds to 2^53 twice over, while 1 + 1 first would reach the next double, 2^53 + 2.
  const double big = 9007199254740992.0;
  EXPECT_EQ(Distances({{"a", {0.0, 0.0}}, {"b", {0.0}}}, {"a", "b"}, {{{"a", {big, 1.0}}, {"b", {1.0}}}}),
            TNumbers{big});
  EXPECT_EQ(Distances({{"a", {0.0, 0.0}}, {"b", {0.0}}}, {"b", "a"}, {{{"a", {1.0, big}}, {"b", {1.0}}}}),
            TNumbers{big + 2.0});
}

TEST(GetDistances, EachOfManyImagesGetsItsOwnDistance) {
  // More than any vector of lanes holds, with an odd rest, and some that cannot be compared in between.
  std::vector<TVectors> images;
  TNumbers expected;
  for (int i = 0; i < 1003; ++i) {
    images.push_back(i % 7 == 3 ? TVectors() : TVectors{{"f", {static_cast<double>(i), -1.0}}});
    expected.push_back(i % 7 == 3 ? kInfinity : i + 1.0);
  }
  EXPECT_EQ(Distances({{"f", {0.0, 0.0}}}, {"f"}, images), expected);
}
