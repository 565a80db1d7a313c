// City-block distances of one vector from many.
#pragma once

#include <cstddef>

namespace kernels {

// Adds the city-block distance of `query` from each of `count` candidates to that candidate's running sum:
//
//   sums[c] += |query[i] - candidates[c][i]|   for i = 0, 1, .. length - 1, in this order
//
// All vectors hold `length` doubles and lie wherever they happen to lie; nothing is asked of their alignment. Each sum
// is built by one addition an element, in order, so that the result is the same to the last bit on every processor
// and whether vectors are compared one by one or many at a time. A candidate with a NaN gets a NaN.
void AddL1Distances(const double* query, std::size_t length, const double* const* candidates, std::size_t count,
                    double* sums);

// The first of the nearest candidates, of those nearer than `distance`: its index, and its distance from the query in
// `distance`, worked out as above. `count` if there is none; `distance` stays then. A candidate that cannot be the
// nearest is left as soon as that is certain, so that not all of its elements are read.
std::size_t FindNearestL1(const double* query, std::size_t length, const double* const* candidates, std::size_t count,
                          double& distance);

}  // namespace kernels
