#include "experiments/distances.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernels/l1-distance-tile.h"

TDistanceWork::TDistanceWork(const TFeatureTable& theTable, const std::vector<TFeatureSet>& sets) : table(theTable) {
  for (std::size_t set = 0; set < sets.size(); ++set) {
    TNode* node = &root;
    // A tree of the sets: "hsv" and "hsv+lbp" share the node of "hsv", whose distances are worked out once. Only common
    // beginnings are shared, because the order of the additions is part of the result.
    for (const std::size_t feature : sets[set]) {
      auto child = std::find_if(node->children.begin(), node->children.end(),
                                [&](const TNode& each) { return each.feature == feature; });
      if (child == node->children.end()) {
        // Moves the other children. Nobody holds a pointer to one of them, since every set starts at the root.
        child = node->children.insert(node->children.end(), TNode{feature, {}, {}});
      }
      node = &*child;
    }
    node->sets.push_back(set);
  }
}

std::size_t TDistanceWork::GetQueriesAtATime() const {
  // 32 MiB of sums; enough queries at 100,000 pictures that the vectors of a part of the collection are used many times
  // while they are in the cache.
  constexpr std::size_t kSums = std::size_t{1} << 22;
  // From 64 on nothing is gained: the vectors of the queries themselves have to stay in the cache.
  // No division by 0: a collection without pictures is refused before.
  return std::clamp<std::size_t>(kSums / table.GetPictureCount(), 1, 64);
}

void TDistanceWork::Run(std::span<const std::uint32_t> queries, const TTake& take) {
  std::vector<double> sums(queries.size() * table.GetPictureCount(), 0.0);
  Visit(root, queries, sums, take);
}

void TDistanceWork::Visit(const TNode& node, std::span<const std::uint32_t> queries, std::vector<double>& sums,
                          const TTake& take) {
  // Sets come in the order of the tree and not in that of the list, hence their position in TTake.
  for (const std::size_t set : node.sets) {
    // A copy, as the sums go on to the sets that begin with this one, and taking may overwrite.
    std::vector<double> distances = sums;
    std::replace_if(
        distances.begin(), distances.end(), [](double sum) { return std::isnan(sum); },
        std::numeric_limits<double>::infinity());
    take(set, distances);
  }
  for (const TNode& child : node.children) {
    // The last branch takes the sums over; the others work on a copy.
    if (&child == &node.children.back()) {
      AddFeature(child.feature, queries, sums);
      Visit(child, queries, sums, take);
    } else {
      std::vector<double> branch = sums;
      AddFeature(child.feature, queries, branch);
      Visit(child, queries, branch, take);
    }
  }
}

void TDistanceWork::AddFeature(std::size_t feature, std::span<const std::uint32_t> queries, std::vector<double>& sums) {
  const TFeatureRows& rows = table.GetFeatures()[feature];
  std::vector<const double*> vectors;
  vectors.reserve(queries.size());
  for (const std::uint32_t query : queries) {
    vectors.push_back(rows.rows[query]);
  }
  const std::size_t count = table.GetPictureCount();
  kernels::AddL1DistanceTile(vectors.data(), vectors.size(), rows.rows.data(), count, rows.length, sums.data(), count);
}
