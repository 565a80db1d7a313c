#include "Sift/sift-conv.h"

#include <algorithm>

// The sums of a block are kept in arrays, which vectors of a size unknown to the compiler cannot form.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Sift/sift-conv.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VL::Detail::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using TTag = hn::ScalableTag<float_t>;
using TVector = hn::Vec<TTag>;

/// A source of rows for the column filter: one pointer for each tap.
struct TColumnInput {
  const float_t* const* rows;
  [[nodiscard]] const float_t* At(std::int32_t tap) const { return rows[tap]; }
};

/// A source for the row filter: the same row, one element further for each tap.
struct TRowInput {
  const float_t* row;
  [[nodiscard]] const float_t* At(std::int32_t tap) const { return row + tap; }
};

/// Both filters share one kernel: kVectors vectors of neighboring outputs from `x` on, so that a tap is broadcast once
/// for all of them and their sums stay in registers.
template <int kVectors, typename TInput>
HWY_INLINE void FilterBlock(const TInput& input, float_t* output, std::int32_t x, const float_t* filter,
                            std::int32_t taps) {
  const TTag tag;
  const auto lanes = static_cast<std::ptrdiff_t>(hn::Lanes(tag));
  TVector sums[kVectors];
  for (int v = 0; v < kVectors; ++v) {
    sums[v] = hn::Zero(tag);
  }
  for (std::int32_t k = 0; k < taps; ++k) {
    const TVector tap = hn::Set(tag, filter[k]);
    const float_t* const values = input.At(k) + x;
    for (int v = 0; v < kVectors; ++v) {
      sums[v] = hn::Add(sums[v], hn::Mul(tap, hn::LoadU(tag, values + v * lanes)));
    }
  }
  for (int v = 0; v < kVectors; ++v) {
    hn::StoreU(sums[v], tag, output + x + v * lanes);
  }
}

/// Filters `count` outputs. The last vector is moved back so that it ends with the row: some outputs are then computed
/// twice, alike, which is cheaper than computing them one by one.
template <typename TInput>
HWY_INLINE void Filter(const TInput& input, float_t* output, std::int32_t count, const float_t* filter,
                       std::int32_t taps) {
  const auto lanes = static_cast<std::int32_t>(hn::Lanes(TTag()));
  std::int32_t x = 0;
  // Eight vectors wide as far as that goes: enough sums that additions do not wait for each other, and few enough for
  // 16 registers. Two and one vector for the rest.
  for (; x + 8 * lanes <= count; x += 8 * lanes) {
    FilterBlock<8>(input, output, x, filter, taps);
  }
  for (; x + 2 * lanes <= count; x += 2 * lanes) {
    FilterBlock<2>(input, output, x, filter, taps);
  }
  for (; x < count && count >= lanes; x += lanes) {
    FilterBlock<1>(input, output, std::min(x, count - lanes), filter, taps);
  }
  for (; x < count; ++x) {
    float_t sum = 0;
    for (std::int32_t k = 0; k < taps; ++k) {
      sum += filter[k] * input.At(k)[x];
    }
    output[x] = sum;
  }
}

/// Copies columns `begin` to `begin` + `count` - 1 of a row of `width`, repeating its edges outside.
HWY_INLINE void CopyWithEdges(float_t* line, const float_t* row, std::int32_t width, std::int32_t begin,
                              std::int32_t count) {
  const std::int32_t inside = std::clamp(-begin, 0, count);
  const std::int32_t beyond = std::clamp(width - begin, inside, count);
  std::fill(line, line + inside, row[0]);
  std::copy(row + begin + inside, row + begin + beyond, line + inside);
  std::fill(line + beyond, line + count, row[width - 1]);
}

/// Filters columns `begin` to `begin` + `count` - 1 of a row along the row, in pieces that fit the line on the stack.
HWY_NOINLINE void FilterRow(float_t* output, const float_t* row, std::int32_t width, std::int32_t begin,
                            std::int32_t count, const float_t* filter, std::int32_t radius) {
  constexpr std::int32_t kLine = 4 * kLargestRadius;
  HWY_ALIGN float_t line[kLine];
  const std::int32_t most = kLine - 2 * radius;
  for (std::int32_t x = 0; x < count; x += most) {
    const std::int32_t piece = std::min(most, count - x);
    CopyWithEdges(line, row, width, begin + x - radius, piece + 2 * radius);
    Filter(TRowInput{line}, output + x, piece, filter, 2 * radius + 1);
  }
}

/// Columns are filtered in strips. The work plane holds for each, as a ring, the filtered rows that one output row
/// needs, and a strip is so narrow that its ring stays in the first-level cache. A strip reads columns of its
/// neighbors, so that a plane that is filtered in place has to be one strip.
std::int32_t StripWidth(const TConvolution& c) {
  // 32 KiB, the size of a first-level data cache. Strips step by 128 floats, eight lines of it, so that neighbors share
  // few lines.
  constexpr std::int32_t kRingFloats = 8192;
  constexpr std::int32_t kStep = 128;
  const std::int32_t strip = std::max(kRingFloats / (2 * c.radius + 1) / kStep * kStep, kStep);
  return c.destination == c.source ? c.width : std::min(strip, c.width);
}

/// Computes the columns `x` to `x` + `count` - 1 of the rows `begin` to `end` - 1.
HWY_NOINLINE void ConvolveStrip(const TConvolution& c, std::int32_t x, std::int32_t count, std::int32_t begin,
                                std::int32_t end) {
  const std::int32_t taps = 2 * c.radius + 1;
  const std::int32_t slots = std::min(taps, c.height);
  float_t* const ring = c.work + static_cast<std::ptrdiff_t>(x) * slots;
  const auto slot = [&](std::int32_t y) {
    return ring + static_cast<std::ptrdiff_t>(std::clamp(y, 0, c.height - 1) % slots) * count;
  };
  const auto offset = [&](std::int32_t y) { return static_cast<std::ptrdiff_t>(y) * c.width; };
  const std::int32_t first = begin == 0 ? -c.radius : begin;
  // One pointer for each tap, moved on by one with each output row.
  const float_t* rows[2 * kLargestRadius + 2];
  for (std::int32_t k = 0; k < taps; ++k) {
    rows[k] = slot(first - 1 - c.radius + k);
  }
  for (std::int32_t y = first; y < end; ++y) {
    const std::int32_t next = y + c.radius;
    if (next < c.height) {
      FilterRow(slot(next), c.source + offset(next), c.width, x, count, c.filter, c.radius);
    }
    // Beyond the last row of the picture slot() clamps, so that the edge row is repeated without being stored again.
    rows[taps] = slot(next);
    std::copy(rows + 1, rows + taps + 1, rows);
    if (y >= 0) {
      Filter(TColumnInput{rows}, c.destination + offset(y) + x, count, c.filter, taps);
    }
  }
}

void Convolve(const TConvolution& c, std::int32_t begin, std::int32_t end) {
  const std::int32_t strip = StripWidth(c);
  for (std::int32_t x = 0; x < c.width && begin < end; x += strip) {
    ConvolveStrip(c, x, std::min(strip, c.width - x), begin, end);
  }
}

void Subtract(float_t* destination, const float_t* a, const float_t* b, std::int32_t count) {
  const TTag tag;
  const auto lanes = static_cast<std::int32_t>(hn::Lanes(tag));
  std::int32_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    hn::StoreU(hn::Sub(hn::LoadU(tag, a + i), hn::LoadU(tag, b + i)), tag, destination + i);
  }
  for (; i < count; ++i) {
    destination[i] = a[i] - b[i];
  }
}

/// Writes the columns of the lanes of `mask`, lane 0 being column `x`, and returns how many.
template <class D, class Mask>
HWY_INLINE std::int32_t WriteColumns(D tag, Mask mask, std::int32_t x, std::int32_t* columns) {
  // Up to 64 lanes. Assembled byte by byte, whatever the order of bytes of the machine.
  HWY_ALIGN std::uint8_t bits[8] = {};
  hn::StoreMaskBits(tag, mask, bits);
  std::uint64_t word = 0;
  for (int byte = 7; byte >= 0; --byte) {
    word = word << 8 | bits[byte];
  }
  std::int32_t count = 0;
  for (; word != 0; word &= word - 1) {
    columns[count++] = x + static_cast<std::int32_t>(hwy::Num0BitsBelowLS1Bit_Nonzero64(word));
  }
  return count;
}

/// A neighbor of a sample: plane, row and column, the sample itself being 1, 1, 1.
struct TNeighbor {
  std::int8_t plane, row, column;
};

// Those that share a face with the sample rule out most lanes, so that the others are seldom read.
constexpr TNeighbor kFaces[] = {{1, 1, 0}, {1, 1, 2}, {1, 0, 1}, {1, 2, 1}, {0, 1, 1}, {2, 1, 1}};
constexpr TNeighbor kOthers[] = {{1, 0, 0}, {1, 0, 2}, {1, 2, 0}, {1, 2, 2}, {0, 1, 0}, {0, 1, 2}, {2, 1, 0},
                                 {2, 1, 2}, {0, 0, 1}, {0, 2, 1}, {2, 0, 1}, {2, 2, 1}, {0, 0, 0}, {0, 0, 2},
                                 {0, 2, 0}, {0, 2, 2}, {2, 0, 0}, {2, 0, 2}, {2, 2, 0}, {2, 2, 2}};

template <class D>
HWY_INLINE hn::Vec<D> Load(D tag, const TNeighborhood& around, const TNeighbor& n, std::int32_t x) {
  return hn::LoadU(tag, around.rows[n.plane][n.row] + x + n.column - 1);
}

/// The lanes from column `x` on that hold an extremum. Comparisons and not maxima decide, as a NaN fails them all.
template <class D>
HWY_INLINE hn::Mask<D> ExtremeLanes(D tag, const TNeighborhood& around, std::int32_t x, float_t threshold) {
  const auto value = Load(tag, around, {1, 1, 1}, x);
  auto tops = hn::Ge(value, hn::Set(tag, threshold));
  auto bottoms = hn::Le(value, hn::Set(tag, -threshold));
  if (hn::AllFalse(tag, hn::Or(tops, bottoms))) {
    return tops;
  }
  for (const TNeighbor& n : kFaces) {
    tops = hn::And(tops, hn::Gt(value, Load(tag, around, n, x)));
    bottoms = hn::And(bottoms, hn::Lt(value, Load(tag, around, n, x)));
  }
  for (const TNeighbor& n : kOthers) {
    if (hn::AllFalse(tag, hn::Or(tops, bottoms))) {
      return tops;
    }
    tops = hn::And(tops, hn::Gt(value, Load(tag, around, n, x)));
    bottoms = hn::And(bottoms, hn::Lt(value, Load(tag, around, n, x)));
  }
  return hn::Or(tops, bottoms);
}

/// Searches from column `x` on, as far as whole vectors reach, and moves `x` there.
template <class D>
HWY_INLINE std::int32_t FindExtremaIn(D tag, std::int32_t* columns, const TNeighborhood& around, std::int32_t& x,
                                      std::int32_t end, float_t threshold) {
  const auto lanes = static_cast<std::int32_t>(hn::Lanes(tag));
  std::int32_t count = 0;
  for (; x + lanes <= end; x += lanes) {
    const auto extrema = ExtremeLanes(tag, around, x, threshold);
    if (!hn::AllFalse(tag, extrema)) {
      count += WriteColumns(tag, extrema, x, columns + count);
    }
  }
  return count;
}

std::int32_t FindExtrema(std::int32_t* columns, const TNeighborhood& around, std::int32_t begin, std::int32_t end,
                         float_t threshold) {
  std::int32_t x = begin;
  std::int32_t count = FindExtremaIn(TTag(), columns, around, x, end, threshold);
  count += FindExtremaIn(hn::CappedTag<float_t, 1>(), columns + count, around, x, end, threshold);
  return count;
}

}  // namespace VL::Detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VL::Detail {

HWY_EXPORT(Convolve);
HWY_EXPORT(Subtract);
HWY_EXPORT(FindExtrema);

void Convolve(const TConvolution& convolution, std::int32_t begin, std::int32_t end) {
  HWY_DYNAMIC_DISPATCH(Convolve)(convolution, begin, end);
}

void Subtract(float_t* destination, const float_t* a, const float_t* b, std::int32_t count) {
  HWY_DYNAMIC_DISPATCH(Subtract)(destination, a, b, count);
}

std::int32_t FindExtrema(std::int32_t* columns, const TNeighborhood& around, std::int32_t begin, std::int32_t end,
                         float_t threshold) {
  return HWY_DYNAMIC_DISPATCH(FindExtrema)(columns, around, begin, end, threshold);
}

}  // namespace VL::Detail
#endif  // HWY_ONCE
