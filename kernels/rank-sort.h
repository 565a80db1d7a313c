#pragma once

#include <cstdint>
#include <vector>

namespace kernels {

/// One row of a ranking: the position of an image in its database, and its distance from the query.
struct TRankEntry {
  std::int32_t imageIndex;
  double distance;
};

/// Sorts by distance, smallest first; entries of equal distance, to which the two zeros count, keep their order. No
/// distance is a NaN. A radix sort, whose time grows with the number of entries alone, and which takes as much memory
/// again while it runs.
void RankSort(std::vector<TRankEntry>& entries);

}  // namespace kernels
