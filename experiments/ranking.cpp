#include "experiments/ranking.h"

#include <algorithm>

TRanker::TRanker(const std::vector<std::vector<std::uint32_t>>& theTagsOfPictures, std::size_t tagCount,
                 bool theKeepsQuery, std::size_t theTopCount)
    : tagsOfPictures(theTagsOfPictures),
      carriers(tagCount),
      keepsQuery(theKeepsQuery),
      topCount(theTopCount),
      ranks(tagCount),
      isAsked(tagCount, false),
      isRelevant(theTagsOfPictures.size(), 0) {
  for (std::uint32_t picture = 0; picture < theTagsOfPictures.size(); ++picture) {
    for (const std::uint32_t tag : theTagsOfPictures[picture]) {
      carriers[tag].push_back(picture);
    }
  }
}

TQueryRanking TRanker::Rank(std::span<const double> distances, std::uint32_t query,
                            std::span<const std::uint32_t> tags) {
  entries.resize(distances.size());
  for (std::size_t picture = 0; picture < distances.size(); ++picture) {
    entries[picture] = {static_cast<std::int32_t>(picture), distances[picture]};
  }
  if (!keepsQuery) {
    // Before the sort: entries are in the order of the collection, so that the position is the picture.
    entries.erase(entries.begin() + query);
  }
  // Stable: ties stay in the order of the collection, as in the command searchimage.
  kernels::RankSort(entries);
  for (const std::uint32_t tag : tags) {
    ranks[tag].clear();
    isAsked[tag] = true;
    for (const std::uint32_t picture : carriers[tag]) {
      isRelevant[picture] = 1;
    }
  }
  // One walk for all tags of the query; most ranks hold a picture that is relevant to none of them.
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto picture = static_cast<std::size_t>(entries[i].imageIndex);
    if (isRelevant[picture] == 0) {
      continue;
    }
    for (const std::uint32_t tag : tagsOfPictures[picture]) {
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
    // The query carries every tag that is asked for, so that there is one to take away. Carriers that cannot be read
    // count: they have ranks too, at the end.
    const std::size_t relevant = carriers[tag].size() - (keepsQuery ? 0 : 1);
    ranking.results.push_back(MeasureTopic(ranks[tag], relevant, entries.size()));
    // Only what was set is taken back, since the next query asks for other tags of thousands.
    isAsked[tag] = false;
    for (const std::uint32_t picture : carriers[tag]) {
      isRelevant[picture] = 0;
    }
  }
  return ranking;
}
