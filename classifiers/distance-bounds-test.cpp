#include "classifiers/distance-bounds.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using TRows = std::vector<std::vector<double>>;

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

std::vector<const double*> Pointers(const TRows& rows) {
  std::vector<const double*> pointers;
  for (const auto& row : rows) {
    pointers.push_back(row.data());
  }
  return pointers;
}

TRows RandomRows(std::size_t count, std::size_t length, const std::function<double()>& number) {
  TRows rows(count, std::vector<double>(length));
  for (auto& row : rows) {
    std::generate(row.begin(), row.end(), number);
  }
  return rows;
}

double Distance(const std::vector<double>& a, const std::vector<double>& b) {
  return std::transform_reduce(a.begin(), a.end(), b.begin(), 0.0, std::plus(),
                               [](double x, double y) { return std::fabs(x - y); });
}

}  // namespace

TEST(TDistanceBounds, NeverRuleOutARowThatIsAsNear) {
  std::mt19937 random(6);
  std::uniform_real_distribution<double> even(-1.0, 1.0);
  const std::function<double()> kinds[] = {
      [&] { return even(random); }, [&] { return 1e12 + even(random); }, [&] { return std::pow(even(random), 21.0); },
      [&] { return std::ldexp(even(random), static_cast<int>(random() % 200) - 1000); },
      [&] { return even(random) * 1e305; }};
  for (const auto& number : kinds) {
    for (const std::size_t length : {64, 100, 256}) {
      const TRows rows = RandomRows(200, length, number);
      const auto bounds = TDistanceBounds::Make(Pointers(rows), length);
      ASSERT_NE(bounds, nullptr);
      TRows queries = RandomRows(20, length, number);
      queries.push_back(rows[7]);
      queries.emplace_back(length, 0.0);
      queries.emplace_back(length, 1e300);
      for (const auto& query : queries) {
        ASSERT_TRUE(bounds->SetQuery(query.data()));
        for (std::size_t row = 0; row < rows.size(); ++row) {
          const auto& within = bounds->Within(Distance(rows[row], query));
          ASSERT_TRUE(std::binary_search(within.begin(), within.end(), row)) << row;
        }
      }
    }
  }
}

TEST(TDistanceBounds, RuleOutNearlyAllThatAreFurther) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> even(0.0, 1.0);
  const TRows rows = RandomRows(2000, 256, [&] { return even(random); });
  const auto bounds = TDistanceBounds::Make(Pointers(rows), 256);
  ASSERT_NE(bounds, nullptr);
  std::size_t left = 0;
  for (const auto& query : RandomRows(20, 256, [&] { return even(random); })) {
    ASSERT_TRUE(bounds->SetQuery(query.data()));
    const std::size_t promising = bounds->Nearest(kNone);
    EXPECT_NE(bounds->Nearest(promising), promising);
    left += bounds->Within(Distance(rows[promising], query)).size();
  }
  EXPECT_LE(left, 20U * 10);
  // 0.35 of the rows' own memory is what such a form may take.
  EXPECT_LE(bounds->GetMemory(), std::size_t{2000} * 256 * sizeof(double) * 35 / 100);
  const TRows shorter = RandomRows(2000, 65, [&] { return even(random); });
  EXPECT_LE(TDistanceBounds::Make(Pointers(shorter), 65)->GetMemory(),
            std::size_t{2000} * 65 * sizeof(double) * 35 / 100);
}

TEST(TDistanceBounds, RowsWithoutARangeHaveNone) {
  const auto make = [](double first, double others) {
    TRows rows(40, std::vector<double>(64, others));
    rows[20][30] = first;
    return TDistanceBounds::Make(Pointers(rows), 64);
  };
  EXPECT_NE(make(1.0, 0.0), nullptr);
  EXPECT_EQ(make(1.0, 1.0), nullptr);
  EXPECT_EQ(make(5e-324, 0.0), nullptr);
  EXPECT_EQ(make(-1.7e308, 1.7e308), nullptr);
  EXPECT_EQ(make(NAN, 0.0), nullptr);
  EXPECT_EQ(make(0.0, NAN), nullptr);
  EXPECT_EQ(make(INFINITY, 0.0), nullptr);
  const std::vector<double> query(64, NAN);
  EXPECT_FALSE(make(1.0, 0.0)->SetQuery(query.data()));
}
