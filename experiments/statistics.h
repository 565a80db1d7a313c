#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Statistics over query pictures: a picture with five tags has five topics and is one draw. Lots are drawn by the
/// Mersenne twister MT19937 (M. Matsumoto, T. Nishimura, ACM TOMACS 8(1), 1998), whose numbers are the same everywhere.

struct TInterval {
  double low;
  double high;
};

/// What each query picture adds to each mean: row p, column c of `sums` is the sum of quantity c over the topics of
/// picture p, of which there are topicCounts[p], at least one.
struct TPictureSums {
  std::size_t columns = 0;
  std::vector<double> sums;
  std::vector<std::uint32_t> topicCounts;
};

constexpr std::size_t kResamples = 10000;

/// 95 percent bootstrap intervals of the means, one for each column (percentile method: B. Efron, R. Tibshirani, An
/// Introduction to the Bootstrap, 1993, ch. 13). A resample draws as many pictures as there are, with replacement;
/// number x of the generator draws picture (x * count) >> 32. Its mean is the sum over all topics of the drawn pictures
/// divided by their number. The interval goes from the 250th smallest to the 250th largest of 10,000 means. All columns
/// share the resamples.
std::vector<TInterval> BootstrapIntervals(const TPictureSums& pictures, std::uint32_t seed);

/// Two-sided p of a paired randomisation test (M. Smucker, J. Allan, B. Carterette, A comparison of statistical
/// significance tests for information retrieval evaluation, CIKM 2007). `differences` holds for each picture the sum of
/// its topics' differences. The statistic T is the absolute sum; under the hypothesis that the two are alike every sign
/// could as well be the other. A pattern of signs is a hit if its sum is at least |T| - 1e-12 times the sum of all
/// absolute differences. Up to 16 pictures all 2^n patterns are counted, p = hits / 2^n; otherwise 100,000 are drawn,
/// p = (1 + hits) / (1 + 100,000): ceil(n / 32) numbers a draw, bit i mod 32 of number i div 32 turns the sign of i.
double RandomisationTest(const std::vector<double>& differences, std::uint32_t seed);

/// Holm's correction (S. Holm, A simple sequentially rejective multiple test procedure, Scand. J. Statist. 6, 1979):
/// the i-th smallest of m becomes p (m - i + 1), at most 1 and not below the one before.
std::vector<double> AdjustHolm(const std::vector<double>& p);
