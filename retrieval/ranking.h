#pragma once

#include <cstdint>
#include <vector>

/// One row of a ranking: the position of an image in its collection, and its distance from the query.
struct TDatabaseIndexEntry {
  std::int32_t imageIndex;
  double distance;
};

/// Sorts by distance, smallest first. Entries of equal distance keep their order.
void SortByDistance(std::vector<TDatabaseIndexEntry>& entries);
