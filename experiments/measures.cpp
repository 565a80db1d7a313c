#include "experiments/measures.h"

#include <algorithm>

namespace {

/// 1 / log2(rank + 1) for the ranks 1 to 10, as literals: the logarithm's last bit is the library's affair.
constexpr std::array<double, 10> kDiscounts = {1.0,
                                               0.6309297535714575,
                                               0.5,
                                               0.43067655807339306,
                                               0.38685280723454163,
                                               0.3562071871080222,
                                               0.3333333333333333,
                                               0.31546487678572877,
                                               0.3010299956639812,
                                               0.2890648263178879};

double NdcgAt10(std::span<const std::uint32_t> ranks, std::size_t relevant) {
  // The discount log2(rank + 1) is that of C. Burges et al., Learning to rank using gradient descent, ICML 2005; the
  // gain is 1 for a relevant picture and 0 for any other.
  double gain = 0.0;
  for (const std::uint32_t rank : ranks) {
    if (rank > kDiscounts.size()) {
      break;
    }
    gain += kDiscounts[rank - 1];
  }
  double ideal = 0.0;
  for (std::size_t i = 0; i < std::min(relevant, kDiscounts.size()); ++i) {
    ideal += kDiscounts[i];
  }
  // Never 0 / 0, as a topic has a relevant picture.
  return gain / ideal;
}

}  // namespace

TTopicResult MeasureTopic(std::span<const std::uint32_t> ranks, std::size_t relevant, std::size_t rankCount) {
  const auto total = static_cast<double>(relevant);
  // Ranks ascend, so the number up to a rank is a position.
  const auto hitsAt = [&](std::size_t rank) {
    return static_cast<double>(std::upper_bound(ranks.begin(), ranks.end(), rank) - ranks.begin());
  };
  TTopicResult result = {};
  // The additions of MeasureRanking in their order, so that ap_ranks is the figure of evaluateindex to the last bit.
  double precisionSum = 0.0;
  for (std::size_t i = 0; i < ranks.size(); ++i) {
    // Relevant pictures that the ranking does not hold add nothing, which is what the definition says of them.
    precisionSum += static_cast<double>(i + 1) / ranks[i];
  }
  double best = 0.0;
  std::size_t hits = ranks.size();
  // From full recall down, so that `best` is the largest precision at this recall or beyond: interpolated precision
  // never rises with recall.
  for (std::size_t level = kRecallLevels; level-- > 0;) {
    // recall >= level / 10 in whole numbers: 3 of 10 is exactly the level 0.3, which no double is.
    for (; hits > 0 && hits * 10 >= level * relevant; --hits) {
      best = std::max(best, static_cast<double>(hits) / ranks[hits - 1]);
    }
    result.curve[level] = best;
  }
  result.measures = {precisionSum / total,
                     hitsAt(1),
                     hitsAt(5) / 5.0,
                     hitsAt(10) / 10.0,
                     hitsAt(20) / 20.0,
                     hitsAt(relevant) / total,
                     ranks.empty() ? 0.0 : 1.0 / ranks.front(),
                     NdcgAt10(ranks, relevant),
                     hitsAt(100) / total,
                     rankCount == 0 ? 0.0 : precisionSum / static_cast<double>(rankCount)};
  return result;
}
