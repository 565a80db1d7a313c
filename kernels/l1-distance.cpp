#include "kernels/l1-distance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/l1-distance.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

double DistanceOnto(double sum, const double* query, const double* candidate, size_t begin, size_t length) {
  for (size_t i = begin; i < length; ++i) {
    sum += std::fabs(query[i] - candidate[i]);
  }
  return sum;
}

// A cache line in doubles.
constexpr size_t kLine = 8;

#if HWY_TARGET != HWY_SCALAR

constexpr size_t kAbreast = 4;

/// Asks for the vectors of the candidates ahead, line by line and one vector behind the other, as they lie in memory as
/// a rule. A processor knows such a stream for what it is; left to itself it sees one short stream for each candidate
/// abreast and fetches too late, and asking for a line of each in turn is no help: twice the time on some.
class TReadAhead {
 public:
  TReadAhead(TVectors theQuery, const double* const* candidates) : query(theQuery), vector(candidates) {}

  void FetchLine() {
    hwy::Prefetch(*vector + i);
    i += kLine;
    if (i >= query[v].size()) {
      i = 0;
      v = v + 1 < query.size() ? v + 1 : 0;
      ++vector;
    }
  }

 private:
  const TVectors query;
  const double* const* vector;
  size_t v = 0;
  size_t i = 0;
};

/// Four candidates abreast, two to a vector of lanes: an addition takes four cycles, so that one sum alone would wait
/// most of the time. Two lanes are enough to be as fast as the memory that the candidates come from. Each candidate has
/// its next vector `step` further on.
void AddFour(const double* HWY_RESTRICT query, size_t length, const double* const* candidates, size_t step,
             TReadAhead& ahead, double* HWY_RESTRICT sums) {
  const hn::FixedTag<double, 2> d;
  const double* const c0 = candidates[0];
  const double* const c1 = candidates[step];
  const double* const c2 = candidates[2 * step];
  const double* const c3 = candidates[3 * step];
  auto sum01 = LoadU(d, sums);
  auto sum23 = LoadU(d, sums + 2);

  // Two elements of two candidates: element i of both first, then element i + 1 of both.
  const auto addPair = [&](auto& sum, auto elements, const double* first, const double* second) HWY_ATTR {
    const auto a = Abs(Sub(elements, LoadU(d, first)));
    const auto b = Abs(Sub(elements, LoadU(d, second)));
    sum = Add(sum, InterleaveLower(d, a, b));
    sum = Add(sum, InterleaveUpper(d, a, b));
  };

  size_t i = 0;
  for (; i + 2 <= length; i += 2) {
    // One line of cache for each of the four candidates, every eight elements: as many bytes are asked for as are
    // consumed.
    if (i % kLine == 0) {
      for (size_t c = 0; c < kAbreast; ++c) {
        ahead.FetchLine();
      }
    }
    const auto elements = LoadU(d, query + i);
    addPair(sum01, elements, c0 + i, c1 + i);
    addPair(sum23, elements, c2 + i, c3 + i);
  }
  StoreU(sum01, d, sums);
  StoreU(sum23, d, sums + 2);
  for (size_t c = 0; c < kAbreast; ++c) {
    sums[c] = DistanceOnto(sums[c], query, candidates[c * step], i, length);
  }
}

/// Takes the candidates four by four and returns the number of those it took.
size_t AddGroups(TVectors query, const double* const* candidates, size_t count, double* sums) {
  const size_t step = query.size();
  size_t c = 0;
  for (; c + kAbreast <= count; c += kAbreast) {
    // Behind the last four there is nothing to fetch but themselves.
    const bool isLast = c + 2 * kAbreast > count;
    TReadAhead ahead(query, candidates + (isLast ? c : c + kAbreast) * step);
    for (size_t v = 0; v < step; ++v) {
      AddFour(query[v].data(), query[v].size(), candidates + c * step + v, step, ahead, sums + c);
    }
  }
  return c;
}

#else

/// Lanes of one element cannot be interleaved: without vectors the plain loop does it all.
size_t AddGroups(TVectors, const double* const*, size_t, double*) {
  return 0;
}

#endif

// Elements between two looks at whether a candidate is out already. Histograms tell early.
constexpr size_t kLook = 64;

/// True if the sum is above `limit` for certain: it adds in whatever order is fastest and stops where it is. Elements
/// behind the last whole kLook do not count.
bool IsAbove(double limit, const double* HWY_RESTRICT query, const double* HWY_RESTRICT candidate, size_t length) {
  const hn::CappedTag<double, kLook / 4> d;
  const size_t lanes = hn::Lanes(d);
  auto sum0 = Zero(d);
  auto sum1 = Zero(d);
  auto sum2 = Zero(d);
  auto sum3 = Zero(d);
  const auto difference = [&](size_t i) HWY_ATTR { return Abs(Sub(LoadU(d, query + i), LoadU(d, candidate + i))); };
  for (size_t i = 0; i + kLook <= length;) {
    for (const size_t end = i + kLook; i < end; i += 4 * lanes) {
      sum0 = Add(sum0, difference(i));
      sum1 = Add(sum1, difference(i + lanes));
      sum2 = Add(sum2, difference(i + 2 * lanes));
      sum3 = Add(sum3, difference(i + 3 * lanes));
    }
    if (hn::GetLane(SumOfLanes(d, Add(Add(sum0, sum1), Add(sum2, sum3)))) > limit) {
      return true;
    }
  }
  return false;
}

}  // namespace

void AddL1Distances(TVectors query, const double* const* candidates, size_t count, double* sums) {
  for (size_t c = AddGroups(query, candidates, count, sums); c < count; ++c) {
    for (size_t v = 0; v < query.size(); ++v) {
      sums[c] = DistanceOnto(sums[c], query[v].data(), candidates[c * query.size() + v], 0, query[v].size());
    }
  }
}

size_t FindNearestL1(const double* query, size_t length, const double* const* candidates, size_t count,
                     double& distance) {
  // However `length` numbers without a sign are added, the rounding takes no sum further from the true one than by this
  // part of it; the factor 2 is for both sums.
  const double slack = 1.0 + 2.0 * static_cast<double>(length) * std::numeric_limits<double>::epsilon();
  constexpr size_t kAhead = 4;
  size_t nearest = count;
  for (size_t c = 0; c < count; ++c) {
    if (c + kAhead < count) {
      // Half of what is read before the first look; most candidates are out by then, and more would push out what is
      // needed.
      for (size_t i = 0; i < std::min(kLook / 2, length); i += kLine) {
        hwy::Prefetch(candidates[c + kAhead] + i);
      }
    }
    // Only what is certainly farther is left out. Whatever is as near as the rounding allows gets its sum in the one
    // order that counts, so that the answer, ties included, is that of a comparison with all.
    if (IsAbove(distance * slack, query, candidates[c], length)) {
      continue;
    }
    const double sum = DistanceOnto(0.0, query, candidates[c], 0, length);
    // A NaN is not smaller than anything, so that a candidate with one is never the nearest.
    if (sum < distance) {
      distance = sum;
      nearest = c;
    }
  }
  return nearest;
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(AddL1Distances);
HWY_EXPORT(FindNearestL1);

void AddL1Distances(TVectors query, const double* const* candidates, std::size_t count, double* sums) {
  HWY_DYNAMIC_DISPATCH(AddL1Distances)(query, candidates, count, sums);
}

std::size_t FindNearestL1(const double* query, std::size_t length, const double* const* candidates, std::size_t count,
                          double& distance) {
  return HWY_DYNAMIC_DISPATCH(FindNearestL1)(query, length, candidates, count, distance);
}

}  // namespace kernels
#endif
