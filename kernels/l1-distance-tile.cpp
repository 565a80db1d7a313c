#include "kernels/l1-distance-tile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/l1-distance-tile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Elements that are laid out at a time: with two vectors of eight lanes these are 32 KiB.
constexpr size_t kElements = 256;

// Queries that share a load of the candidates.
constexpr size_t kQueries = 4;

// Two vectors of candidates by up to four queries: eight running sums, which stay in registers, and each pair of loads
// serves four queries. Sums live in named variables and not in an array, as vectors of some processors cannot be
// elements of one.
template <class D, size_t kCount>
void AddQueries(D d, const double* const* queries, size_t begin, size_t length, const double* HWY_RESTRICT tile,
                double* sums, size_t stride) {
  const size_t lanes = hn::Lanes(d);
  static_assert(kCount == 1 || kCount == kQueries);
  const double* const q0 = queries[0] + begin;
  // With a single query the other pointers are copies that nobody follows: the branches that would are left out at
  // compile time.
  const double* const q1 = queries[kCount > 1 ? 1 : 0] + begin;
  const double* const q2 = queries[kCount > 1 ? 2 : 0] + begin;
  const double* const q3 = queries[kCount > 1 ? 3 : 0] + begin;
  double* const s1 = sums + (kCount > 1 ? stride : 0);
  double* const s2 = sums + (kCount > 1 ? 2 * stride : 0);
  double* const s3 = sums + (kCount > 1 ? 3 * stride : 0);
  auto low0 = LoadU(d, sums);
  auto high0 = LoadU(d, sums + lanes);
  auto low1 = LoadU(d, s1);
  auto high1 = LoadU(d, s1 + lanes);
  auto low2 = LoadU(d, s2);
  auto high2 = LoadU(d, s2 + lanes);
  auto low3 = LoadU(d, s3);
  auto high3 = LoadU(d, s3 + lanes);
  for (size_t i = 0; i < length; ++i) {
    const auto low = Load(d, tile + 2 * lanes * i);
    const auto high = Load(d, tile + 2 * lanes * i + lanes);
    const auto e0 = Set(d, q0[i]);
    low0 = Add(low0, Abs(Sub(e0, low)));
    high0 = Add(high0, Abs(Sub(e0, high)));
    if constexpr (kCount > 1) {
      const auto e1 = Set(d, q1[i]);
      low1 = Add(low1, Abs(Sub(e1, low)));
      high1 = Add(high1, Abs(Sub(e1, high)));
      const auto e2 = Set(d, q2[i]);
      low2 = Add(low2, Abs(Sub(e2, low)));
      high2 = Add(high2, Abs(Sub(e2, high)));
      const auto e3 = Set(d, q3[i]);
      low3 = Add(low3, Abs(Sub(e3, low)));
      high3 = Add(high3, Abs(Sub(e3, high)));
    }
  }
  StoreU(low0, d, sums);
  StoreU(high0, d, sums + lanes);
  if constexpr (kCount > 1) {
    StoreU(low1, d, s1);
    StoreU(high1, d, s1 + lanes);
    StoreU(low2, d, s2);
    StoreU(high2, d, s2 + lanes);
    StoreU(low3, d, s3);
    StoreU(high3, d, s3 + lanes);
  }
}

}  // namespace

void AddL1DistanceTile(const double* const* queries, size_t queryCount, const double* const* candidates, size_t count,
                       size_t length, double* sums, size_t stride) {
  const hn::CappedTag<double, 8> d;
  const size_t abreast = 2 * hn::Lanes(d);
  // Room for two vectors of eight lanes, the most that the tag allows; shorter ones use a part of it.
  HWY_ALIGN double tile[kElements * 16];
  size_t c = 0;
  for (; c + abreast <= count; c += abreast) {
    for (size_t begin = 0; begin < length; begin += kElements) {
      const size_t elements = std::min(kElements, length - begin);
      for (size_t k = 0; k < abreast; ++k) {
        // Candidates become lanes: element i of all of them lies side by side, so that no sum is ever split across
        // lanes and the order of its additions is that of the plain loop.
        const double* candidate = candidates[c + k] + begin;
        for (size_t i = 0; i < elements; ++i) {
          tile[i * abreast + k] = candidate[i];
        }
      }
      size_t q = 0;
      for (; q + kQueries <= queryCount; q += kQueries) {
        AddQueries<decltype(d), kQueries>(d, queries + q, begin, elements, tile, sums + q * stride + c, stride);
      }
      for (; q < queryCount; ++q) {
        AddQueries<decltype(d), 1>(d, queries + q, begin, elements, tile, sums + q * stride + c, stride);
      }
    }
  }
  for (; c < count; ++c) {
    for (size_t q = 0; q < queryCount; ++q) {
      // What is left of the candidates, fewer than a tile has room for, in the same order of additions.
      double sum = sums[q * stride + c];
      for (size_t i = 0; i < length; ++i) {
        sum += std::fabs(queries[q][i] - candidates[c][i]);
      }
      sums[q * stride + c] = sum;
    }
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(AddL1DistanceTile);

void AddL1DistanceTile(const double* const* queries, std::size_t queryCount, const double* const* candidates,
                       std::size_t count, std::size_t length, double* sums, std::size_t stride) {
  HWY_DYNAMIC_DISPATCH(AddL1DistanceTile)(queries, queryCount, candidates, count, length, sums, stride);
}

}  // namespace kernels
#endif
