// City-block distances of many from many.
#pragma once

#include <cstddef>

namespace kernels {

// Adds the city-block distances of `queryCount` vectors from `count` others, all of `length` numbers, to running sums:
//
//   sums[q * stride + c] += |queries[q][i] - candidates[c][i]|   for i = 0, 1, .., in this order
//
// The bits are those of AddL1Distances. A few candidates at a time are laid out side by side in the cache, where every
// query meets them: the vectors come from memory once for all queries.
void AddL1DistanceTile(const double* const* queries, std::size_t queryCount, const double* const* candidates,
                       std::size_t count, std::size_t length, double* sums, std::size_t stride);

}  // namespace kernels
