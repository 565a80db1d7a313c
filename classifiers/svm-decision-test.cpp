#include "classifiers/svm-decision.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <svm.h>

namespace {

using TRow = std::vector<double>;

std::vector<svm_node> Nodes(const TRow& row) {
  std::vector<svm_node> nodes;
  for (const double value : row) {
    nodes.push_back({static_cast<int>(nodes.size()), value});
  }
  nodes.push_back({-1, 0.0});
  return nodes;
}

/// A model as the library keeps it, of random support vectors and coefficients.
class TRandomModel {
 public:
  TRandomModel(int kernel, int degree, std::size_t count, std::size_t length, std::mt19937& random) {
    std::normal_distribution<double> number;
    for (std::size_t row = 0; row < count; ++row) {
      TRow values(length);
      for (double& value : values) {
        value = random() % 4 == 0 ? 0.0 : number(random);
      }
      rows.push_back(Nodes(values));
      coefficients.push_back(std::ldexp(number(random), static_cast<int>(random() % 16)));
    }
    for (auto& row : rows) {
      pointers.push_back(row.data());
    }
    counts = {static_cast<int>(count - count / 3), static_cast<int>(count / 3)};
    threshold = number(random);
    model.param.svm_type = C_SVC;
    model.param.kernel_type = kernel;
    model.param.degree = degree;
    model.param.gamma = std::fabs(number(random)) / static_cast<double>(length);
    model.param.coef0 = number(random);
    model.nr_class = 2;
    model.l = static_cast<int>(count);
    model.SV = pointers.data();
    model.sv_coef = &coefficientRow;
    coefficientRow = coefficients.data();
    model.rho = &threshold;
    model.label = labels;
    model.nSV = counts.data();
  }

  svm_model model = {};

 private:
  std::vector<std::vector<svm_node>> rows;
  std::vector<svm_node*> pointers;
  std::vector<double> coefficients;
  double* coefficientRow = nullptr;
  std::vector<int> counts;
  double threshold = 0.0;
  int labels[2] = {1, -1};
};

TRow Query(std::size_t length, int kind, std::mt19937& random) {
  std::normal_distribution<double> number;
  TRow query(length);
  for (double& value : query) {
    value = kind == 0 ? 0.0 : number(random);
  }
  if (kind == 1) {
    query[random() % length] = std::numeric_limits<double>::quiet_NaN();
  } else if (kind == 2) {
    query[random() % length] = std::numeric_limits<double>::infinity();
  }
  return query;
}

/// Which NaN comes out of two is left to the compiler; that it is one is not.
void ExpectSameBits(double found, double expected) {
  EXPECT_TRUE(std::isnan(expected) ? std::isnan(found)
                                   : std::bit_cast<std::uint64_t>(found) == std::bit_cast<std::uint64_t>(expected))
      << found << " " << expected;
}

}  // namespace

TEST(TSvmDecision, EqualsTheLibrarysValueToTheLastBit) {
  std::mt19937 random(4);
  int positives = 0;
  int negatives = 0;
  for (const auto& [kernel, degree] : std::vector<std::pair<int, int>>{
           {LINEAR, 0}, {RBF, 0}, {POLY, 0}, {POLY, 1}, {POLY, 2}, {POLY, 3}, {POLY, 10}}) {
    for (const std::size_t count : {0, 1, 2, 8, 41, 200}) {
      for (const std::size_t length : {1, 3, 64, 257}) {
        SCOPED_TRACE(testing::Message() << kernel << ", " << degree << ", " << count << ", " << length);
        TRandomModel made(kernel, degree, count, length, random);
        const TSvmDecision decision(made.model, static_cast<std::uint32_t>(length));
        for (int kind = 0; kind < 8; ++kind) {
          const TRow query = Query(length, kind, random);
          const std::vector<svm_node> nodes = Nodes(query);
          double expected = 0.0;
          const double label = svm_predict_values(&made.model, nodes.data(), &expected);
          ExpectSameBits(decision.Value(query.data()), expected);
          EXPECT_EQ(decision.Label(query.data()), label);
          (label > 0 ? positives : negatives) += 1;
        }
      }
    }
  }
  EXPECT_GT(positives, 100);
  EXPECT_GT(negatives, 100);
}

TEST(TSvmDecision, OneClassIsTheAnswerToEverything) {
  svm_model model = {};
  int label = -1;
  model.nr_class = 1;
  model.label = &label;
  EXPECT_EQ(TSvmDecision(model, 0).Label(nullptr), -1.0);
}
