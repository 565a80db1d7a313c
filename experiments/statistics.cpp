#include "experiments/statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>

#include <boost/random/mersenne_twister.hpp>

namespace {

// 2.5 percent of 10,000 resamples.
constexpr std::size_t kTail = 250;
// 65,536 patterns: up to there the exact test is cheaper than the draws of the other.
constexpr std::size_t kMostPatterns = 16;
// At p = 0.05 the standard error of the draws is 0.0007, the root of 0.05 * 0.95 / 100,000.
constexpr std::size_t kDraws = 100000;

/// Columns that are resampled at a time: 10,000 means of each stay in memory.
constexpr std::size_t kColumnsAtATime = 64;

TInterval PercentileInterval(std::vector<double>& means) {
  const auto at = [&](std::size_t position) {
    // Only two positions of the order are wanted, and a full sort would take ten times as long.
    std::nth_element(means.begin(), means.begin() + static_cast<std::ptrdiff_t>(position), means.end());
    return means[position];
  };
  return {at(kTail - 1), at(means.size() - kTail)};
}

void BootstrapColumns(const TPictureSums& pictures, std::size_t first, std::uint32_t seed,
                      std::span<TInterval> intervals) {
  const std::size_t count = pictures.topicCounts.size();
  std::vector<std::vector<double>> means(intervals.size());
  std::vector<double> sums(intervals.size());
  // From the seed anew for each block of columns: all columns see the same resamples, whatever the size of a block.
  boost::random::mt19937 generator(seed);
  for (std::size_t resample = 0; resample < kResamples; ++resample) {
    std::fill(sums.begin(), sums.end(), 0.0);
    std::uint64_t topics = 0;
    for (std::size_t draw = 0; draw < count; ++draw) {
      // The high half of a product, which is what the header promises. Distributions of the standard library differ
      // between its makers.
      // Some pictures are drawn more often than others, but only by count in 2^32 (D. Lemire, Fast random integer
      // generation in an interval, ACM TOMACS 29(1), 2019), which no interval shows.
      const auto picture = static_cast<std::size_t>(std::uint64_t{generator()} * count >> 32);
      const double* row = &pictures.sums[picture * pictures.columns + first];
      for (std::size_t column = 0; column < sums.size(); ++column) {
        sums[column] += row[column];
      }
      topics += pictures.topicCounts[picture];
    }
    for (std::size_t column = 0; column < sums.size(); ++column) {
      means[column].push_back(sums[column] / static_cast<double>(topics));
    }
  }
  std::transform(means.begin(), means.end(), intervals.begin(), PercentileInterval);
}

/// The sums of eight differences under each of 256 patterns of signs.
using TSignTable = std::array<double, 256>;

/// Tables for all differences, eight to a table; with them a draw costs an addition for eight pictures. Sums in this
/// order differ from plain ones by far less than the margin of a hit.
std::vector<TSignTable> MakeSignTables(const std::vector<double>& differences) {
  std::vector<TSignTable> tables((differences.size() + 31) / 32 * 4, TSignTable{});
  for (std::size_t i = 0; i < differences.size(); ++i) {
    for (std::size_t pattern = 0; pattern < 256; ++pattern) {
      tables[i / 8][pattern] += (pattern >> i % 8 & 1) != 0 ? -differences[i] : differences[i];
    }
  }
  return tables;
}

}  // namespace

std::vector<TInterval> BootstrapIntervals(const TPictureSums& pictures, std::uint32_t seed) {
  std::vector<TInterval> intervals(pictures.columns);
  for (std::size_t first = 0; first < pictures.columns; first += kColumnsAtATime) {
    const std::size_t count = std::min(kColumnsAtATime, pictures.columns - first);
    BootstrapColumns(pictures, first, seed, std::span(intervals).subspan(first, count));
  }
  return intervals;
}

double RandomisationTest(const std::vector<double>& differences, std::uint32_t seed) {
  const double absolute = std::accumulate(differences.begin(), differences.end(), 0.0,
                                          [](double sum, double each) { return sum + std::abs(each); });
  // The margin is for rounding: the same sum in another order must still be a hit. n additions are off by n * 1.1e-16
  // of the absolute sum at the worst (N. Higham, Accuracy and Stability of Numerical Algorithms, 2002, ch. 4): the
  // margin covers two sums of 4,500 pictures.
  const double limit = std::abs(std::accumulate(differences.begin(), differences.end(), 0.0)) - 1e-12 * absolute;
  const std::vector<TSignTable> tables = MakeSignTables(differences);
  const std::size_t words = tables.size() / 4;
  const auto isHit = [&](std::span<const std::uint32_t> pattern) {
    double sum = 0.0;
    for (std::size_t word = 0; word < words; ++word) {
      for (std::size_t byte = 0; byte < 4; ++byte) {
        sum += tables[word * 4 + byte][pattern[word] >> (8 * byte) & 0xFF];
      }
    }
    return std::abs(sum) >= limit;
  };
  std::vector<std::uint32_t> pattern(words);
  std::size_t hits = 0;
  if (differences.size() <= kMostPatterns) {
    const std::uint32_t patterns = std::uint32_t{1} << differences.size();
    for (std::uint32_t signs = 0; signs < patterns; ++signs) {
      // One word is enough for 16 signs, and the tables of missing pictures are 0.
      std::fill(pattern.begin(), pattern.end(), signs);
      hits += isHit(pattern) ? 1 : 0;
    }
    // The pattern that was observed is one of them and a hit, so that p is never 0.
    return static_cast<double>(hits) / patterns;
  }
  boost::random::mt19937 generator(seed);
  for (std::size_t draw = 0; draw < kDraws; ++draw) {
    std::generate(pattern.begin(), pattern.end(), [&] { return static_cast<std::uint32_t>(generator()); });
    hits += isHit(pattern) ? 1 : 0;
  }
  // The observed pattern counts as a draw (B. Phipson, G. Smyth, "Permutation P-values Should Never Be Zero", 2010).
  return static_cast<double>(1 + hits) / (1 + kDraws);
}

std::vector<double> AdjustHolm(const std::vector<double>& p) {
  std::vector<std::size_t> order(p.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return p[a] < p[b]; });
  std::vector<double> adjusted(p.size());
  double before = 0.0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    // The correction keeps the order: no p comes out below that of a smaller one. Equal ones come out equal, whichever
    // stands first.
    before = std::max(before, std::min(1.0, p[order[i]] * static_cast<double>(p.size() - i)));
    adjusted[order[i]] = before;
  }
  return adjusted;
}
