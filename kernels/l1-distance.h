// City-block distances of one from many.
#pragma once

#include <cstddef>
#include <span>

namespace kernels {

/// Vectors of possibly different lengths.
using TVectors = std::span<const std::span<const double>>;

/// Adds the city-block distance of `query`, n vectors, from each of `count` candidates of n vectors to that candidate's
/// running sum. Vector v of candidate c is candidates[c * n + v], as long as that of the query:
///
///   sums[c] += |query[v][i] - candidates[c * n + v][i]|   for v = 0, 1, .. n - 1, for i = 0, 1, .., in this order
///
/// Vectors lie wherever they happen to lie; nothing is asked of their alignment. Each sum is built by one addition an
/// element, in order, so that the result is the same to the last bit on every processor and whether candidates are
/// compared one by one or many at a time. A candidate with a NaN gets a NaN.
void AddL1Distances(TVectors query, const double* const* candidates, std::size_t count, double* sums);

/// The first of the nearest candidates, of those nearer than `distance`: its index, and its distance from the query in
/// `distance`, worked out as above. `count` if there is none; `distance` stays then. A candidate that cannot be the
/// nearest is left as soon as that is certain, so that not all of its elements are read.
std::size_t FindNearestL1(const double* query, std::size_t length, const double* const* candidates, std::size_t count,
                          double& distance);

}  // namespace kernels
