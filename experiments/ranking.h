#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "experiments/measures.h"
#include "kernels/rank-sort.h"

/// The ranking of one query and what it is worth for each of the query's topics.
struct TQueryRanking {
  /// The pictures of the first ranks.
  std::vector<std::int32_t> top;
  /// In the order of the topics that were asked for.
  std::vector<TTopicResult> results;
};

/// Ranks queries. Keeps its memory from one query to the next.
class TRanker {
 public:
  /// `tagsOfPictures` has the tags of each picture as numbers from 0 to `tagCount` - 1, ascending; it must outlive the
  /// ranker. With `keepsQuery` a query stays in its own ranking, and is relevant there.
  TRanker(const std::vector<std::vector<std::uint32_t>>& tagsOfPictures, std::size_t tagCount, bool keepsQuery,
          std::size_t topCount);

  /// Ranks by distance, ties in the order of the collection, and measures the ranking for each of these tags of the
  /// query.
  TQueryRanking Rank(std::span<const double> distances, std::uint32_t query, std::span<const std::uint32_t> tags);

 private:
  const std::vector<std::vector<std::uint32_t>>& tagsOfPictures;
  /// By tag: its pictures.
  std::vector<std::vector<std::uint32_t>> carriers;
  bool keepsQuery;
  std::size_t topCount;
  std::vector<kernels::TRankEntry> entries;
  /// By tag: the ranks of its carriers, for the tags that are asked for.
  std::vector<std::vector<std::uint32_t>> ranks;
  std::vector<bool> isAsked;
  /// By picture: 1 if it carries a tag that is asked for. Bytes, because every rank looks one up.
  std::vector<char> isRelevant;
};
