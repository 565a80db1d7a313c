#include "experiments/ranking.h"

#include <algorithm>
#include <utility>

TRanker::TRanker(const std::vector<std::vector<std::uint32_t>>& tagsOfPictures, std::vector<std::size_t> carriers,
                 bool keepsQuery, std::size_t topCount)
    : tagsOfPictures(tagsOfPictures),
      carriers(std::move(carriers)),
      keepsQuery(keepsQuery),
      topCount(topCount),
      ranks(this->carriers.size()),
      isAsked(this->carriers.size(), false) {}

TQueryRanking TRanker::Rank(std::span<const double> distances, std::uint32_t query,
                            std::span<const std::uint32_t> tags) {
  entries.clear();
  for (std::uint32_t picture = 0; picture < distances.size(); ++picture) {
    if (picture != query || keepsQuery) {
      entries.push_back({static_cast<std::int32_t>(picture), distances[picture]});
    }
  }
  SortByDistance(entries);
  for (const std::uint32_t tag : tags) {
    ranks[tag].clear();
    isAsked[tag] = true;
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    for (const std::uint32_t tag : tagsOfPictures[static_cast<std::size_t>(entries[i].imageIndex)]) {
      if (isAsked[tag]) {
        ranks[tag].push_back(static_cast<std::uint32_t>(i + 1));
      }
    }
  }
  TQueryRanking ranking;
  for (std::size_t i = 0; i < std::min(topCount, entries.size()); ++i) {
    ranking.top.push_back(entries[i].imageIndex);
  }
  for (const std::uint32_t tag : tags) {
    ranking.results.push_back(MeasureTopic(ranks[tag], carriers[tag] - (keepsQuery ? 0 : 1), entries.size()));
    isAsked[tag] = false;
  }
  return ranking;
}
