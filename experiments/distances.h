#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "experiments/feature-files.h"

/// A set of features, as positions in a table, in the order in which their distances are added up.
using TFeatureSet = std::vector<std::size_t>;

/// Distances of several queries from all pictures, for several sets: those of the command searchimage, bit for bit.
/// Sets that begin alike share the sums of their beginning.
class TDistanceWork {
 public:
  /// Refers to the table.
  TDistanceWork(const TFeatureTable& table, const std::vector<TFeatureSet>& sets);

  /// Called once for each set with its position and the distances, row by row for each query. A distance that is not a
  /// number is infinite. The numbers may be overwritten.
  using TTake = std::function<void(std::size_t set, std::span<double> distances)>;

  void Run(std::span<const std::uint32_t> queries, const TTake& take);

  /// The number of queries that keeps the memory of a run within bounds.
  std::size_t GetQueriesAtATime() const;

 private:
  /// The sets that begin with the same features.
  struct TNode {
    std::size_t feature = 0;
    std::vector<std::size_t> sets;
    std::vector<TNode> children;
  };

  void Visit(const TNode& node, std::span<const std::uint32_t> queries, std::vector<double>& sums, const TTake& take);
  void AddFeature(std::size_t feature, std::span<const std::uint32_t> queries, std::vector<double>& sums);

  const TFeatureTable& table;
  TNode root;
};
