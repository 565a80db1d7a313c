#include "kernels/rank-sort.h"

#include <array>
#include <bit>
#include <cstddef>
#include <numeric>
#include <utility>

namespace kernels {

namespace {

constexpr int kBytes = sizeof(std::uint64_t);

/// A whole number of the same order as the distance. The bits of positive doubles are in their order; those of negative
/// ones are in the opposite order, and above the others by the sign.
std::uint64_t SortKey(double distance) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  // The sum makes one of the two zeros, which are equal.
  const auto bits = std::bit_cast<std::uint64_t>(distance + 0.0);
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

std::size_t ByteOf(const TRankEntry& entry, int byte) {
  return static_cast<std::size_t>(SortKey(entry.distance) >> (8 * byte) & 0xFF);
}

}  // namespace

void RankSort(std::vector<TRankEntry>& entries) {
  if (entries.empty()) {
    return;
  }
  // Sorting by distribution (D. Knuth, The Art of Computer Programming 3, section 5.2.5), byte by byte from the lowest,
  // each pass stable. All counts are taken in one go over the entries.
  // 256 buckets by 8 passes: the counters, 16 KiB, stay in the first-level cache. A comparison sort takes about 20
  // comparisons of unpredictable outcome for each of a million entries; this takes 8 moves at most, and as a rule
  // fewer.
  std::array<std::array<std::size_t, 256>, kBytes> counts = {};
  for (const TRankEntry& entry : entries) {
    for (int byte = 0; byte < kBytes; ++byte) {
      ++counts[static_cast<std::size_t>(byte)][ByteOf(entry, byte)];
    }
  }
  std::vector<TRankEntry> sorted(entries.size());
  for (int byte = 0; byte < kBytes; ++byte) {
    auto& positions = counts[static_cast<std::size_t>(byte)];
    // Distances of one search have their signs and most of their exponents in common.
    if (positions[ByteOf(entries.front(), byte)] == entries.size()) {
      continue;
    }
    // Turns counts into the place where each bucket begins. As the pass goes through the entries in order, equal ones
    // keep theirs: that is what makes ties stable over all passes.
    std::exclusive_scan(positions.begin(), positions.end(), positions.begin(), std::size_t{0});
    for (const TRankEntry& entry : entries) {
      sorted[positions[ByteOf(entry, byte)]++] = entry;
    }
    // The vectors change roles with each pass, however many there are: the result is always in `entries`.
    std::swap(entries, sorted);
  }
}

}  // namespace kernels
