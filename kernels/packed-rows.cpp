#include "kernels/packed-rows.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/packed-rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr size_t kAbreast = TPackedRows::kAbreast;

// The stream of vectors at the same lanes of all elements of a group of interleaved rows.
const double* Stream(const double* numbers, size_t length, size_t lanes, size_t stream) {
  const size_t row = stream * lanes;
  // Rows without elements have no memory to point into.
  return length == 0 ? numbers : numbers + row / kAbreast * length * kAbreast + row % kAbreast;
}

// `add` adds what an element of the query and those of a vector's rows make of each other to their sums.
template <class Add>
void SumUp(const double* HWY_RESTRICT query, size_t length, const double* HWY_RESTRICT numbers, size_t count,
           double* HWY_RESTRICT sums, const Add& add) {
  // A group has eight rows, so that a vector of any processor, capped at eight lanes, lies within one.
  const hn::CappedTag<double, kAbreast> d;
  const size_t lanes = hn::Lanes(d);
  const size_t streams = count / lanes;
  size_t s = 0;
  // An addition waits up to four cycles for the one before, so that four sums have to take turns.
  for (; s + 4 <= streams; s += 4) {
    const double* HWY_RESTRICT rows0 = Stream(numbers, length, lanes, s);
    const double* HWY_RESTRICT rows1 = Stream(numbers, length, lanes, s + 1);
    const double* HWY_RESTRICT rows2 = Stream(numbers, length, lanes, s + 2);
    const double* HWY_RESTRICT rows3 = Stream(numbers, length, lanes, s + 3);
    auto sum0 = Zero(d);
    auto sum1 = Zero(d);
    auto sum2 = Zero(d);
    auto sum3 = Zero(d);
    for (size_t i = 0; i < length; ++i) {
      const auto element = Set(d, query[i]);
      sum0 = add(sum0, element, LoadU(d, rows0 + i * kAbreast));
      sum1 = add(sum1, element, LoadU(d, rows1 + i * kAbreast));
      sum2 = add(sum2, element, LoadU(d, rows2 + i * kAbreast));
      sum3 = add(sum3, element, LoadU(d, rows3 + i * kAbreast));
    }
    StoreU(sum0, d, sums + s * lanes);
    StoreU(sum1, d, sums + (s + 1) * lanes);
    StoreU(sum2, d, sums + (s + 2) * lanes);
    StoreU(sum3, d, sums + (s + 3) * lanes);
  }
  // What is left of the streams. Each sum is the same as above, with its additions in the same order.
  for (; s < streams; ++s) {
    const double* HWY_RESTRICT rows = Stream(numbers, length, lanes, s);
    auto sum = Zero(d);
    for (size_t i = 0; i < length; ++i) {
      sum = add(sum, Set(d, query[i]), LoadU(d, rows + i * kAbreast));
    }
    StoreU(sum, d, sums + s * lanes);
  }
}

}  // namespace

// No fused multiply-add here and below: the libraries round the product and then the sum, and their bits are to be met.
void DotProducts(const double* query, size_t length, const double* numbers, size_t count, double* sums) {
  SumUp(query, length, numbers, count, sums,
        [](auto sum, auto element, auto row) HWY_ATTR { return Add(sum, Mul(element, row)); });
}

void DotProductsByFours(const double* HWY_RESTRICT query, size_t length, const double* HWY_RESTRICT numbers,
                        size_t count, double* HWY_RESTRICT sums) {
  const hn::CappedTag<double, kAbreast> d;
  const size_t lanes = hn::Lanes(d);
  for (size_t s = 0; s < count / lanes; ++s) {
    const double* HWY_RESTRICT rows = Stream(numbers, length, lanes, s);
    const auto product = [&](size_t i) HWY_ATTR { return Mul(Set(d, query[i]), LoadU(d, rows + i * kAbreast)); };
    auto sum = Zero(d);
    // The order of the neural network library, whose loop takes the rest of the division by four first, from its last
    // element down.
    for (size_t i = length % 4; i > 0; --i) {
      sum = Add(sum, product(i - 1));
    }
    // One addition in four waits for the one before: a single sum keeps the processor busy.
    for (size_t i = length % 4; i < length; i += 4) {
      sum = Add(sum, Add(Add(Add(product(i), product(i + 1)), product(i + 2)), product(i + 3)));
    }
    StoreU(sum, d, sums + s * lanes);
  }
}

void SquaredDistances(const double* query, size_t length, const double* numbers, size_t count, double* sums) {
  SumUp(query, length, numbers, count, sums, [](auto sum, auto element, auto row) HWY_ATTR {
    const auto difference = Sub(element, row);
    return Add(sum, Mul(difference, difference));
  });
}

}  // namespace HWY_NAMESPACE
}  // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

namespace {

HWY_EXPORT(DotProducts);
HWY_EXPORT(DotProductsByFours);
HWY_EXPORT(SquaredDistances);

}  // namespace

TPackedRows::TPackedRows(std::size_t theCount, std::size_t theLength) : count(theCount), length(theLength) {
  numbers.resize(RoundedCount() * theLength);
}

void TPackedRows::DotProducts(const double* query, double* sums) const {
  HWY_DYNAMIC_DISPATCH(kernels::DotProducts)(query, length, numbers.data(), RoundedCount(), sums);
}

void TPackedRows::DotProductsByFours(const double* query, double* sums) const {
  HWY_DYNAMIC_DISPATCH(kernels::DotProductsByFours)(query, length, numbers.data(), RoundedCount(), sums);
}

void TPackedRows::SquaredDistances(const double* query, double* sums) const {
  HWY_DYNAMIC_DISPATCH(kernels::SquaredDistances)(query, length, numbers.data(), RoundedCount(), sums);
}

}  // namespace kernels
#endif
