#include "kernels/l1-distance.h"

#include <cmath>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/l1-distance.cpp"
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

#if HWY_TARGET != HWY_SCALAR

constexpr size_t kAbreast = 8;

// Eight candidates abreast, two to a vector: an addition takes four cycles, so that one sum alone would wait most of
// the time. Vectors of two doubles are enough to be faster than the memory that the candidates come from.
void AddEight(const double* HWY_RESTRICT query, size_t length, const double* const* candidates,
              double* HWY_RESTRICT sums) {
  const hn::FixedTag<double, 2> d;
  const double* const c0 = candidates[0];
  const double* const c1 = candidates[1];
  const double* const c2 = candidates[2];
  const double* const c3 = candidates[3];
  const double* const c4 = candidates[4];
  const double* const c5 = candidates[5];
  const double* const c6 = candidates[6];
  const double* const c7 = candidates[7];
  auto sum01 = LoadU(d, sums);
  auto sum23 = LoadU(d, sums + 2);
  auto sum45 = LoadU(d, sums + 4);
  auto sum67 = LoadU(d, sums + 6);

  // Two elements of two candidates: element i of both first, then element i + 1 of both.
  const auto addPair = [&](auto& sum, auto elements, const double* first, const double* second) HWY_ATTR {
    const auto a = Abs(Sub(elements, LoadU(d, first)));
    const auto b = Abs(Sub(elements, LoadU(d, second)));
    sum = Add(sum, InterleaveLower(d, a, b));
    sum = Add(sum, InterleaveUpper(d, a, b));
  };

  size_t i = 0;
  for (; i + 2 <= length; i += 2) {
    const auto elements = LoadU(d, query + i);
    addPair(sum01, elements, c0 + i, c1 + i);
    addPair(sum23, elements, c2 + i, c3 + i);
    addPair(sum45, elements, c4 + i, c5 + i);
    addPair(sum67, elements, c6 + i, c7 + i);
  }
  StoreU(sum01, d, sums);
  StoreU(sum23, d, sums + 2);
  StoreU(sum45, d, sums + 4);
  StoreU(sum67, d, sums + 6);
  for (size_t c = 0; c < kAbreast; ++c) {
    sums[c] = DistanceOnto(sums[c], query, candidates[c], i, length);
  }
}

// Takes the candidates eight by eight and returns the number of those it took.
size_t AddGroups(const double* query, size_t length, const double* const* candidates, size_t count, double* sums) {
  size_t c = 0;
  for (; c + kAbreast <= count; c += kAbreast) {
    AddEight(query, length, candidates + c, sums + c);
  }
  return c;
}

#else

// Lanes of one element cannot be interleaved: without vectors the plain loop does it all.
size_t AddGroups(const double*, size_t, const double* const*, size_t, double*) {
  return 0;
}

#endif

}  // namespace

void AddL1Distances(const double* query, size_t length, const double* const* candidates, size_t count, double* sums) {
  for (size_t c = AddGroups(query, length, candidates, count, sums); c < count; ++c) {
    sums[c] = DistanceOnto(sums[c], query, candidates[c], 0, length);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

HWY_EXPORT(AddL1Distances);

void AddL1Distances(const double* query, std::size_t length, const double* const* candidates, std::size_t count,
                    double* sums) {
  HWY_DYNAMIC_DISPATCH(AddL1Distances)(query, length, candidates, count, sums);
}

}  // namespace kernels
#endif
