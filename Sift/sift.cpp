#include "Sift/sift.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <limits>
#include <new>
#include <numbers>
#include <tuple>
#include <utility>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

// The assertions below stand between a wrong index and foreign memory: they stay on in every build.
#undef NDEBUG
#include <cassert>

namespace VL {

namespace {

constexpr std::int64_t kLargestBuffer = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kBandFloats = 1 << 16;  // of a level, while the next are made of it: a part of the cache
constexpr float_t kPi = std::numbers::pi_v<float_t>;
constexpr float_t kTwoPi = 2.0F * kPi;

// Section 5 of the paper: bins of 10 degrees, a window of 1.5 times the scale, further orientations from 80% of the
// highest peak on. The six smoothings by a box of three bins are the engine's own.
constexpr int kOrientationBins = 36;
constexpr float_t kOrientationWindow = 1.5F;  // its sigma, in units of the keypoint's scale
constexpr float_t kOrientationReach = 3.0F;   // where it ends, in units of that sigma
constexpr int kHistogramSmoothings = 6;
constexpr float_t kPeakRatio = 0.8F;

// Section 6.1 of the paper: 4 x 4 histograms of 8 directions make 128 numbers, clamped at 0.2 of the vector's length so
// that single strong gradients, as of glare, do not decide a match.
constexpr int kSpatialBins = 4;  // per side
constexpr int kDirectionBins = 8;
constexpr float_t kDescriptorClamp = 0.2F;

// Refinement interpolates, which raises the absolute value at the extremum: candidates somewhat below the threshold may
// end above it, and are cheap to look at. Of the paper's limits of an offset the engine has its own, as sift.h
// says.
constexpr float_t kCandidateRatio = 0.8F;  // of the threshold, before refinement
constexpr int kRefinements = 5;
constexpr float_t kMoveOffset = 0.6F;
constexpr float_t kLargestOffset = 1.5F;
constexpr float_t kSingularPivot = 1e-10F;

/// A size in octave `o`.
std::int64_t Shifted(std::int64_t size, std::int32_t o) {
  return o < 0 ? size << -o : size >> std::min(o, 62);
}

/// Null if there is no memory. Where the system has large pages on request, a large array asks for them: the first use
/// of its memory, small page by small page, would take as long as filtering it.
std::unique_ptr<float_t[]> AllocateFloats(std::int64_t count) {
  const auto size = static_cast<std::size_t>(count);
  std::unique_ptr<float_t[]> array(new (std::nothrow) float_t[size]);
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kPage = 4096;
  constexpr std::size_t kLarge = std::size_t{4} << 20;
  void* first = array.get();
  std::size_t bytes = size * sizeof(float_t);
  if (array && bytes >= kLarge && std::align(kPage, kLarge / 2, first, bytes) != nullptr) {
    madvise(first, bytes / kPage * kPage, MADV_HUGEPAGE);  // advice: without it all goes on as before
  }
#endif
  return array;
}

/// Truncates towards zero; what no integer can hold becomes the nearest, and NaN 0.
std::int32_t Truncate(float_t value) {
  constexpr auto kMost = static_cast<float_t>(1 << 30);
  return std::isnan(value) ? 0 : static_cast<std::int32_t>(std::clamp(value, -kMost, kMost));
}

/// The limits may cross, where there are no octaves or too few levels.
std::int32_t Clamped(std::int64_t value, std::int64_t least, std::int64_t most) {
  return static_cast<std::int32_t>(std::max(std::min(value, most), least));
}

/// Reduces an angle to 0 included to 2 pi. A tiny negative one rounds to 2 pi itself.
float_t Reduce(float_t angle) {
  // fmod is exact and keeps the sign of its first argument.
  const float_t rest = std::fmod(angle, kTwoPi);
  return rest < 0 ? rest + kTwoPi : rest;
}

/// Takes every `step`-th element of every `step`-th row.
void Subsample(float_t* destination, std::int32_t width, std::int32_t height, const float_t* source,
               std::int64_t sourceWidth, std::int32_t step) {
  for (std::int32_t y = 0; y < height; ++y) {
    const float_t* const row = source + y * sourceWidth * step;
    for (std::int32_t x = 0; x < width; ++x) {
      *destination++ = row[static_cast<std::int64_t>(x) * step];
    }
  }
}

std::int32_t FilterRadius(float_t sigma) {
  // Beyond four sigmas a Gaussian is below 1/2900 of its peak.
  return static_cast<std::int32_t>(std::ceil(4.0F * sigma));
}

std::int32_t FilterTaps(float_t sigma) {
  return 2 * FilterRadius(sigma) + 1;
}

/// Writes the FilterTaps of a Gaussian, which sum up to 1, and returns the radius.
std::int32_t FillFilter(float_t* filter, float_t sigma) {
  const std::int32_t radius = FilterRadius(sigma);
  float_t sum = 0;
  for (std::int32_t j = -radius; j <= radius; ++j) {
    const auto d = static_cast<float_t>(j);
    // The middle tap is 1 even where the square of sigma is too small for a float.
    filter[radius + j] = j == 0 ? 1.0F : std::exp(-0.5F * d * d / (sigma * sigma));
    sum += filter[radius + j];
  }
  for (std::int32_t j = 0; j <= 2 * radius; ++j) {
    // To a sum of 1, so that flat areas keep their level however the Gaussian is cut off.
    filter[j] /= sum;
  }
  return radius;
}

/// Doubles `height` rows of `width` elements along the row, with means between neighbors and the last element twice,
/// and writes the result transposed.
void DoubleTranspose(float_t* destination, const float_t* source, std::int64_t width, std::int64_t height) {
  for (std::int64_t y = 0; y < height; ++y) {
    const float_t* const row = source + y * width;
    float_t* column = destination + y;
    for (std::int64_t x = 0; x < width; ++x) {
      column[0] = row[x];
      column[height] = x + 1 < width ? 0.5F * (row[x] + row[x + 1]) : row[x];
      column += 2 * height;
    }
  }
}

/// First and second derivatives of a difference of levels, by differences of the 3 x 3 x 3 samples around a point.
struct TDerivatives {
  float_t value, x, y, s, xx, yy, ss, xy, xs, ys;
};

/// `samples` points to the middle one in the finer of the two levels; the next row is `row` further, the next level
/// `plane`.
TDerivatives Differentiate(const float_t* samples, std::ptrdiff_t row, std::ptrdiff_t plane) {
  const auto at = [=](int x, int y, int s) {
    const float_t* const finer = samples + x + y * row + s * plane;
    return finer[plane] - finer[0];
  };
  TDerivatives d;
  d.value = at(0, 0, 0);
  // Central differences with the unit of one sample or level (section 4 of the paper).
  d.x = 0.5F * (at(1, 0, 0) - at(-1, 0, 0));
  d.y = 0.5F * (at(0, 1, 0) - at(0, -1, 0));
  d.s = 0.5F * (at(0, 0, 1) - at(0, 0, -1));
  d.xx = at(1, 0, 0) + at(-1, 0, 0) - 2.0F * at(0, 0, 0);
  d.yy = at(0, 1, 0) + at(0, -1, 0) - 2.0F * at(0, 0, 0);
  d.ss = at(0, 0, 1) + at(0, 0, -1) - 2.0F * at(0, 0, 0);
  d.xy = 0.25F * (at(1, 1, 0) + at(-1, -1, 0) - at(-1, 1, 0) - at(1, -1, 0));
  d.xs = 0.25F * (at(1, 0, 1) + at(-1, 0, -1) - at(-1, 0, 1) - at(1, 0, -1));
  d.ys = 0.25F * (at(0, 1, 1) + at(0, -1, -1) - at(0, -1, 1) - at(0, 1, -1));
  return d;
}

using TOffset = std::array<float_t, 3>;

/// The offset at which the quadratic through the point has its extremum, by Gaussian elimination with row pivoting;
/// zero where the second derivatives are singular.
TOffset SolveOffset(const TDerivatives& d) {
  std::array<std::array<float_t, 3>, 3> a = {{{d.xx, d.xy, d.xs}, {d.xy, d.yy, d.ys}, {d.xs, d.ys, d.ss}}};
  TOffset b = {-d.x, -d.y, -d.s};
  for (int j = 0; j < 3; ++j) {
    // The row with the largest pivot comes up, so that a small one does not blow up the rounding of the others.
    int best = j;
    float_t pivot = 0;
    for (int i = j; i < 3; ++i) {
      if (std::abs(a[i][j]) > std::abs(pivot)) {
        best = i;
        pivot = a[i][j];
      }
    }
    if (std::abs(pivot) < kSingularPivot) {
      return {};
    }
    std::swap(a[j], a[best]);
    std::swap(b[j], b[best]);
    for (int k = j; k < 3; ++k) {
      a[j][k] /= pivot;
    }
    b[j] /= pivot;
    for (int i = j + 1; i < 3; ++i) {
      const float_t factor = a[i][j];
      for (int k = j; k < 3; ++k) {
        a[i][k] -= factor * a[j][k];
      }
      b[i] -= factor * b[j];
    }
  }
  // Back substitution: the diagonal is 1 by now.
  b[1] -= b[2] * a[1][2];
  b[0] -= b[2] * a[0][2];
  b[0] -= b[1] * a[0][1];
  return b;
}

/// The step of a refinement along an axis, which keeps a sample between the point and the border.
int Step(float_t offset, std::int32_t position, std::int32_t size) {
  // A move within the picture only. Where the offset points beyond the last sample that has neighbors, the candidate
  // stays and is judged there.
  if (offset > kMoveOffset && position < size - 2) {
    return 1;
  }
  return offset < -kMoveOffset && position > 1 ? -1 : 0;
}

/// The tests of contrast and of edges (section 4 of the paper). A saddle has a negative score; NaN passes none of them.
bool IsStrong(const TDerivatives& d, const TOffset& b, float_t threshold, float_t edgeThreshold) {
  const float_t value = d.value + 0.5F * (d.x * b[0] + d.y * b[1] + d.s * b[2]);
  const float_t trace = d.xx + d.yy;
  // Section 4.1 of the paper: trace^2 / determinant of the 2 x 2 Hessian grows with the ratio r of the principal
  // curvatures, and (r + 1)^2 / r is its value at the largest ratio allowed.
  const float_t score = trace * trace / (d.xx * d.yy - d.xy * d.xy);
  const float_t limit = (edgeThreshold + 1) * (edgeThreshold + 1) / edgeThreshold;
  return std::abs(value) > threshold && score < limit && score >= 0 && std::abs(b[0]) < kLargestOffset &&
         std::abs(b[1]) < kLargestOffset && std::abs(b[2]) < kLargestOffset;
}

using THistogram = std::array<float_t, kOrientationBins>;

void SmoothHistogram(THistogram& bins) {
  const float_t first = bins.front();
  float_t before = bins.back();
  for (int i = 0; i < kOrientationBins; ++i) {
    const float_t after = i + 1 < kOrientationBins ? bins[i + 1] : first;
    // Old values throughout, though the bins are overwritten: `before` and `first` keep those that are gone by then.
    // The histogram is a circle.
    before = std::exchange(bins[i], (before + bins[i] + after) / 3.0F);
  }
}

/// Writes the angles of the first peaks, each the extremum of a parabola through a bin and its neighbors.
int FindPeaks(const THistogram& bins, float_t* angles) {
  const float_t highest = *std::max_element(bins.begin(), bins.end());
  int count = 0;
  for (int i = 0; i < kOrientationBins && count < Sift::kMaxOrientations; ++i) {
    const float_t h0 = bins[i];
    const float_t hm = bins[(i + kOrientationBins - 1) % kOrientationBins];
    const float_t hp = bins[(i + 1) % kOrientationBins];
    if (h0 > kPeakRatio * highest && h0 > hm && h0 > hp) {
      // The vertex of the parabola through three neighboring bins, in bins; the denominator is negative at a peak,
      // never 0.
      const float_t di = -0.5F * (hp - hm) / (hp + hm - 2 * h0);
      const float_t angle = kTwoPi * (static_cast<float_t>(i) + di + 0.5F) / kOrientationBins;
      // The last bin reaches up to 2 pi, which in floats lies above the real one.
      angles[count++] = angle < kTwoPi ? angle : 0;
    }
  }
  return count;
}

/// A sample seen from the keypoint: its offset in bins, and its direction in direction bins.
struct TDescriptorSample {
  float_t nx, ny, nt;
  float_t weight;
};

/// Shares a sample among the eight bins around it; spatial bins outside the grid get nothing.
void Distribute(const TDescriptorSample& sample, float_t* descriptor) {
  const auto binx = static_cast<int>(std::floor(sample.nx - 0.5F));
  const auto biny = static_cast<int>(std::floor(sample.ny - 0.5F));
  const auto bint = static_cast<int>(std::floor(sample.nt));
  const float_t rx = sample.nx - (static_cast<float_t>(binx) + 0.5F);
  const float_t ry = sample.ny - (static_cast<float_t>(biny) + 0.5F);
  const float_t rt = sample.nt - static_cast<float_t>(bint);
  const auto share = [](int e, float_t rest) { return std::abs(1.0F - static_cast<float_t>(e) - rest); };
  constexpr int kHalf = kSpatialBins / 2;
  // Trilinear interpolation (section 6.1 of the paper): a sample enters each bin by 1 less its distance from that bin's
  // center, so that a small shift moves little from bin to bin.
  for (int ey = 0; ey < 2; ++ey) {
    for (int ex = 0; ex < 2; ++ex) {
      const int column = binx + ex + kHalf;
      const int row = biny + ey + kHalf;
      if (column < 0 || column >= kSpatialBins || row < 0 || row >= kSpatialBins) {
        continue;
      }
      float_t* const bins = descriptor + static_cast<std::ptrdiff_t>(row * kSpatialBins + column) * kDirectionBins;
      for (int et = 0; et < 2; ++et) {
        bins[(bint + et) % kDirectionBins] += sample.weight * share(ex, rx) * share(ey, ry) * share(et, rt);
      }
    }
  }
}

}  // namespace

namespace Detail {

float_t expn(float_t x) {
  assert(VL::float_t(0) <= x && x <= Detail::expnTableMax);
  return std::exp(-x);
}

}  // namespace Detail

// Construction and buffers

Sift::Sift(const float_t* image, std::int32_t theWidth, std::int32_t theHeight, float_t theSigman, float_t theSigma0,
           std::int32_t theO, std::int32_t theS, std::int32_t theOmin, std::int32_t theSmin, std::int32_t theSmax)
    : sigman(theSigman), sigma0(theSigma0), O(theO), S(theS), omin(theOmin), smin(theSmin), smax(theSmax) {
  octavesAskedFor = ParametersAreValid() ? theO : 0;
  BuildPyramid(image, theWidth, theHeight);
}

Sift::~Sift() = default;

bool Sift::ParametersAreValid() const {
  // Beyond 2^24, neighboring levels are the same float.
  constexpr std::int32_t kFarthestLevel = 1 << 24;
  if (S < 1 || O < 1 || omin < -8 || omin > 16 || O > 128 - omin || smin > smax || smin < -kFarthestLevel ||
      smax > kFarthestLevel) {
    return false;
  }
  if (!(sigman > 0 && sigma0 > 0 && std::isfinite(sigman) && std::isfinite(sigma0))) {
    return false;
  }
  // The widest filters are the one to the last level and, if the picture is nearly sharp, the one of the base.
  const float_t widest = std::max(StepSigma(smax), sigma0 * LevelFactor(smin));
  return 4.0F * widest <= static_cast<float_t>(Detail::kLargestRadius);
}

void Sift::Reset() {
  O = 0;
  workBuffer.reset();
  workBufferSize = 0;
  octaveBuffers.clear();
  keypoints.clear();
}

/// An octave's array is sized for the largest octave of that area, so that a picture of another shape but of the same
/// area fits as well.
bool Sift::AllocateOctaves(std::int64_t area) {
  octaveBuffers.clear();
  for (std::int32_t i = 0; i < O; ++i) {
    octaveBuffers.push_back(AllocateFloats((std::int64_t{smax} - smin + 1) * Shifted(area, std::min(2 * i, 62))));
    if (!octaveBuffers.back()) {
      return false;
    }
  }
  return true;
}

bool Sift::AllocateBuffers() {
  const std::int64_t w = Shifted(width, omin);
  const std::int64_t h = Shifted(height, omin);
  const std::int64_t steps = std::int64_t{smax} - smin;
  // The buffer serves in turn as the filters' work planes, one for each level, the rows of the differences and the
  // gradients, two floats a sample on smax - smin - 2 levels.
  const std::int64_t planes = std::max(steps, 2 * (steps + 4));
  if (w > kLargestBuffer || h > kLargestBuffer || w * h > kLargestBuffer / planes) {
    return false;
  }
  const auto size = static_cast<std::int32_t>(w * h * planes);
  if (workBuffer && workBufferSize == size) {
    return true;
  }
  octaveBuffers.clear();
  workBuffer.reset();
  workBuffer = AllocateFloats(size);
  workBufferSize = size;
  workOctave = 0;
  return workBuffer && AllocateOctaves(w * h);
}

// Access

std::int32_t Sift::GetOctaveWidth(std::int32_t o) const {
  assert(omin <= o && o < omin + O);
  return static_cast<std::int32_t>(Shifted(width, o));
}

std::int32_t Sift::GetOctaveHeight(std::int32_t o) const {
  assert(omin <= o && o < omin + O);
  return static_cast<std::int32_t>(Shifted(height, o));
}

float_t Sift::GetSamplingPeriod(std::int32_t o) const {
  assert(omin <= o && o < omin + O);
  return std::ldexp(1.0F, o);
}

const float_t* Sift::GetLevel(std::int32_t o, std::int32_t s) const {
  assert(omin <= o && o < omin + O);
  assert(smin <= s && s <= smax);
  const std::ptrdiff_t plane = static_cast<std::ptrdiff_t>(GetOctaveWidth(o)) * GetOctaveHeight(o);
  return octaveBuffers[o - omin].get() + (s - smin) * plane;
}

float_t* Sift::Level(std::int32_t o, std::int32_t s) {
  return octaveBuffers[o - omin].get() + (GetLevel(o, s) - GetLevel(o, smin));
}

// Scale space

/// The factor by which the scale grows from level 0 to level `s`.
float_t Sift::LevelFactor(std::int32_t s) const {
  const float_t sigmak = std::pow(2.0F, 1.0F / static_cast<float_t>(S));
  return std::pow(sigmak, static_cast<float_t>(s));
}

/// The smoothing that leads from level `s` - 1 to level `s`, in samples of its octave.
float_t Sift::StepSigma(std::int32_t s) const {
  const float_t sigmak = std::pow(2.0F, 1.0F / static_cast<float_t>(S));
  // Variances of Gaussians add up: from scale a to scale b leads a filter of sigma sqrt(b^2 - a^2), and neighboring
  // levels have the ratio 2^(1/S).
  const float_t dsigma0 = sigma0 * std::sqrt(1.0F - 1.0F / (sigmak * sigmak));
  return dsigma0 * LevelFactor(s);
}

void Sift::BuildPyramid(const float_t* image, std::int32_t newWidth, std::int32_t newHeight) {
  const bool empty = image == nullptr || newWidth < 1 || newHeight < 1;
  width = empty ? 0 : newWidth;
  height = empty ? 0 : newHeight;
  keypoints.clear();
  workHoldsGradients = false;
  O = octavesAskedFor;
  try {
    if (O == 0 || !AllocateBuffers()) {
      Reset();
    } else if (!empty) {
      FillOctaves(image);
    }
  } catch (...) {
    // The lists of filters and of octaves take memory too.
    Reset();
    throw;
  }
}

void Sift::FillOctaves(const float_t* image) {
  if (omin < 0) {
    Double(Level(omin, smin), image);
  }
  for (std::int32_t o = omin; o < omin + O; ++o) {
    MakeChain(o);
    MakeLevels(o, image);
  }
}

/// The level of octave `o` - 1 that the base of octave `o` is taken from.
std::int32_t Sift::BestLevel() const {
  return static_cast<std::int32_t>(std::min(std::int64_t{smin} + S, std::int64_t{smax}));
}

/// The smoothing that the base of octave `o` needs once its samples are taken, in samples of that octave; 0 if none.
float_t Sift::BaseSigma(std::int32_t o) const {
  const float_t sa = sigma0 * LevelFactor(smin);
  // What is there already: the blur of the picture, or that of the level that the samples come from, each in samples of
  // this octave.
  const float_t sb = o == omin ? sigman / GetSamplingPeriod(omin) : sigma0 * LevelFactor(BestLevel() - S);
  const bool smooth = o == omin ? sa > sb : BestLevel() - smin < S;
  return smooth ? std::sqrt(sa * sa - sb * sb) : 0;
}

/// Lays out the filters of octave `o`, from level to level. Each has a plane of the work buffer.
void Sift::MakeChain(std::int32_t o) {
  const auto sigma = [&](std::int32_t s) { return s == smin ? BaseSigma(o) : StepSigma(s); };
  const std::int32_t first = sigma(smin) > 0 ? smin : smin + 1;
  std::size_t taps = 0;
  for (std::int32_t s = first; s <= smax; ++s) {
    taps += static_cast<std::size_t>(FilterTaps(sigma(s)));
  }
  filters.resize(taps);
  chain.clear();
  chain.reserve(static_cast<std::size_t>(smax - first) + 1);
  const std::int32_t w = GetOctaveWidth(o);
  const std::int32_t h = GetOctaveHeight(o);
  float_t* filter = filters.data();
  float_t* work = workBuffer.get();
  for (std::int32_t s = first; s <= smax; ++s) {
    const std::int32_t radius = FillFilter(filter, sigma(s));
    chain.push_back({Level(o, s), work, Level(o, std::max(s - 1, smin)), w, h, filter, radius});
    filter += FilterTaps(sigma(s));
    work += static_cast<std::ptrdiff_t>(w) * h;
  }
}

/// Makes the levels of octave `o` band by band: a band goes through all of them while it is in the cache. Each level
/// stays behind the one before it by the radius of its filter, until that one is complete.
void Sift::MakeLevels(std::int32_t o, const float_t* image) {
  const std::int32_t h = GetOctaveHeight(o);
  const std::int32_t rows = kBandFloats / std::max(GetOctaveWidth(o), 1) + 1;
  for (std::int32_t begin = 0; begin < h; begin += rows) {
    const std::int32_t end = std::min(begin + rows, h);
    FillBase(o, image, begin, end);
    std::int64_t lag = 0;
    for (const Detail::TConvolution& convolution : chain) {
      // A filter needs rows below the one that it computes; behind several filters in a row the radii add up.
      lag += convolution.radius;
      Detail::Convolve(convolution, Clamped(begin - lag, 0, h), end == h ? h : Clamped(end - lag, 0, h));
    }
  }
}

/// Takes the samples of rows `begin` to `end` - 1 of the base of octave `o`. Those of a doubled picture are there.
void Sift::FillBase(std::int32_t o, const float_t* image, std::int32_t begin, std::int32_t end) {
  const std::int32_t w = GetOctaveWidth(o);
  float_t* const rows = Level(o, smin) + static_cast<std::ptrdiff_t>(begin) * w;
  if (o > omin) {
    const std::int64_t sourceWidth = GetOctaveWidth(o - 1);
    Subsample(rows, w, end - begin, Level(o - 1, BestLevel()) + std::int64_t{2} * begin * sourceWidth, sourceWidth, 2);
  } else if (o >= 0) {
    const std::int32_t step = 1 << o;
    Subsample(rows, w, end - begin, image + std::int64_t{begin} * step * width, width, step);
  }
}

/// Doubles the image -omin times; the array in between lies in the work buffer.
void Sift::Double(float_t* destination, const float_t* image) {
  const float_t* source = image;
  std::int64_t w = width;
  std::int64_t h = height;
  for (std::int32_t o = omin; o < 0; ++o) {
    DoubleTranspose(workBuffer.get(), source, w, h);
    w *= 2;
    DoubleTranspose(destination, workBuffer.get(), h, w);
    h *= 2;
    source = destination;
  }
}

// Keypoints

void Sift::DetectKeypoints(float_t threshold, float_t edgeThreshold) {
  keypoints.clear();
  for (std::int32_t o = omin; o < omin + O; ++o) {
    workHoldsGradients = false;
    const auto first = static_cast<std::ptrdiff_t>(keypoints.size());
    FindCandidates(o, kCandidateRatio * threshold);
    // Refined in place: what is accepted moves forward over what was refused.
    auto accepted = keypoints.begin() + first;
    for (auto candidate = accepted; candidate != keypoints.end(); ++candidate) {
      if (Refine(o, threshold, edgeThreshold, *candidate)) {
        *accepted++ = *candidate;
      }
    }
    keypoints.erase(accepted, keypoints.end());
  }
}

/// Appends the extrema of the differences in octave `o`. Of each difference plane the work buffer holds three rows, in
/// turn: they are searched while they are in the cache, and planes never go through memory. Rows come before levels in
/// this search, so that the extrema are then sorted into their order.
void Sift::FindCandidates(std::int32_t o, float_t threshold) {
  const std::int32_t w = GetOctaveWidth(o);
  const std::int32_t h = GetOctaveHeight(o);
  // An extremum is compared with its eight neighbors in the picture, which a smaller octave does not have.
  if (w < 3 || h < 3) {
    return;
  }
  const auto first = static_cast<std::ptrdiff_t>(keypoints.size());
  for (std::int32_t y = 0; y < h; ++y) {
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(y) * w;
    for (std::int32_t s = smin; s < smax; ++s) {
      Detail::Subtract(DifferenceRow(w, s, y), GetLevel(o, s + 1) + row, GetLevel(o, s) + row, w);
    }
    if (y >= 2) {
      FindCandidatesInRow(o, y - 1, threshold);
    }
  }
  std::sort(keypoints.begin() + first, keypoints.end(), [](const Keypoint& a, const Keypoint& b) {
    return std::tie(a.is, a.iy, a.ix) < std::tie(b.is, b.iy, b.ix);
  });
}

/// Where row `y` of level `s` + 1 minus level `s` lies in the work buffer, in an octave of the width `w`.
float_t* Sift::DifferenceRow(std::int32_t w, std::int32_t s, std::int32_t y) {
  return workBuffer.get() + (static_cast<std::ptrdiff_t>(y % 3) * (smax - smin) + (s - smin)) * w;
}

void Sift::FindCandidatesInRow(std::int32_t o, std::int32_t y, float_t threshold) {
  // A part of a row at a time, with room on the stack for as many candidates as it has columns.
  constexpr std::int32_t kColumns = 1024;
  std::int32_t columns[kColumns];
  const std::int32_t w = GetOctaveWidth(o);
  for (std::int32_t s = smin + 1; s <= smax - 2; ++s) {
    Detail::TNeighborhood around;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        around.rows[i][j] = DifferenceRow(w, s - 1 + i, y - 1 + j);
      }
    }
    for (std::int32_t x = 1; x < w - 1; x += kColumns) {
      const std::int32_t count = Detail::FindExtrema(columns, around, x, std::min(w - 1, x + kColumns), threshold);
      for (std::int32_t i = 0; i < count; ++i) {
        keypoints.push_back({.o = o, .ix = columns[i], .iy = y, .is = s, .x = 0, .y = 0, .s = 0, .sigma = 0});
      }
    }
  }
}

/// Moves a candidate of octave `o` to its extremum and fills its fields. False if it is none.
bool Sift::Refine(std::int32_t o, float_t threshold, float_t edgeThreshold, Keypoint& keypoint) const {
  const std::int32_t w = GetOctaveWidth(o);
  const std::int32_t h = GetOctaveHeight(o);
  const std::ptrdiff_t plane = static_cast<std::ptrdiff_t>(w) * h;
  const float_t* const level = GetLevel(o, keypoint.is);
  TDerivatives derivatives;
  TOffset offset;
  int dx = 0;
  int dy = 0;
  for (int i = 0; i < kRefinements && (i == 0 || dx != 0 || dy != 0); ++i) {
    keypoint.ix += dx;
    keypoint.iy += dy;
    derivatives = Differentiate(level + keypoint.ix + static_cast<std::ptrdiff_t>(keypoint.iy) * w, w, plane);
    offset = SolveOffset(derivatives);
    dx = Step(offset[0], keypoint.ix, w);
    dy = Step(offset[1], keypoint.iy, h);
  }
  if (!IsStrong(derivatives, offset, threshold, edgeThreshold)) {
    return false;
  }
  const float_t xn = static_cast<float_t>(keypoint.ix) + offset[0];
  const float_t yn = static_cast<float_t>(keypoint.iy) + offset[1];
  const float_t sn = static_cast<float_t>(keypoint.is) + offset[2];
  const float_t period = GetSamplingPeriod(o);
  keypoint.x = xn * period;
  keypoint.y = yn * period;
  keypoint.s = sn;
  keypoint.sigma = sigma0 * std::pow(2.0F, sn / static_cast<float_t>(S) + static_cast<float_t>(o));
  return xn >= 0 && xn <= static_cast<float_t>(w - 1) && yn >= 0 && yn <= static_cast<float_t>(h - 1) &&
         sn >= static_cast<float_t>(smin) && sn <= static_cast<float_t>(smax);
}

// Orientation and descriptor

void Sift::ComputeGradients(std::int32_t o) {
  const std::int32_t w = GetOctaveWidth(o);
  const std::int32_t h = GetOctaveHeight(o);
  if (workHoldsGradients && workOctave == o) {
    return;
  }
  const std::ptrdiff_t plane = static_cast<std::ptrdiff_t>(w) * h;
  for (std::int32_t s = smin + 1; s <= smax - 2; ++s) {
    const float_t* const level = GetLevel(o, s);
    float_t* const pairs = workBuffer.get() + 2 * plane * (s - smin - 1);
    for (std::int32_t y = 1; y < h - 1; ++y) {
      const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(y) * w;
      for (std::ptrdiff_t i = row + 1; i < row + w - 1; ++i) {
        // Magnitude and direction side by side, since every reader wants both.
        const float_t gx = 0.5F * (level[i + 1] - level[i - 1]);
        const float_t gy = 0.5F * (level[i + w] - level[i - w]);
        const float_t angle = std::atan2(gy, gx) + kTwoPi;
        pairs[2 * i] = std::sqrt(gx * gx + gy * gy);
        // Below 4 pi, so that the remainder is this difference, and exact.
        pairs[2 * i + 1] = angle < kTwoPi ? angle : angle - kTwoPi;
      }
    }
  }
  workHoldsGradients = true;
  workOctave = o;
}

/// A keypoint in the samples of its octave, and the gradients of its level.
struct Sift::TPlacement {
  std::int32_t w, h;
  float_t x, y, sigma;
  std::int32_t xi, yi;
  std::int32_t level;  // among those with gradients
};

namespace {

float_t OrientationRadius(float_t sigma) {
  return std::floor(kOrientationReach * kOrientationWindow * sigma);
}

float_t DescriptorRadius(float_t bin) {
  return std::floor(bin * std::numbers::sqrt2_v<float_t> * (kSpatialBins + 1) * 0.5F + 0.5F);
}

/// Whether the farthest sample of a window stays in the range of expn, and its radius in that of integers. NaN does
/// not. The argument of a sample that is turned is summed up from other terms than `largestExponent`: each of the eight
/// roundings on the way can take it up by a half epsilon, of which the margin is four times the sum.
bool WindowFits(float_t radius, float_t largestExponent) {
  constexpr float_t kMargin = 1.0F - 16 * std::numeric_limits<float_t>::epsilon();
  return radius < static_cast<float_t>(1 << 30) && largestExponent <= kMargin * Detail::expnTableMax;
}

bool OrientationFits(float_t sigma) {
  const float_t sw = kOrientationWindow * sigma;
  const float_t radius = OrientationRadius(sigma);
  return WindowFits(radius, (radius * radius + 0.5F) / (2 * sw * sw));
}

/// `away` is the distance of the keypoint from its sample along an axis.
bool DescriptorFits(float_t bin, float_t away) {
  const float_t radius = DescriptorRadius(bin);
  const float_t farthest = (radius + away) / bin;
  return bin > 0 && WindowFits(radius, 2 * farthest * farthest * 0.125F);
}

}  // namespace

/// False if `keypoint` has no place: outside its octave, on a level without gradients, or of a scale without a window.
bool Sift::Place(const Keypoint& keypoint, TPlacement& place) const {
  if (keypoint.o < omin || keypoint.o >= omin + O || keypoint.is <= smin || keypoint.is >= smax - 1) {
    return false;
  }
  const float_t period = GetSamplingPeriod(keypoint.o);
  place.w = GetOctaveWidth(keypoint.o);
  place.h = GetOctaveHeight(keypoint.o);
  place.x = keypoint.x / period;
  place.y = keypoint.y / period;
  place.sigma = keypoint.sigma / period;
  place.xi = Truncate(place.x + 0.5F);
  place.yi = Truncate(place.y + 0.5F);
  place.level = keypoint.is - smin - 1;
  return !std::isnan(place.x) && !std::isnan(place.y) && place.xi >= 0 && place.xi < place.w && place.yi >= 0 &&
         place.yi < place.h && place.sigma > 0 && OrientationFits(place.sigma);
}

/// Calls visit(dx, dy, magnitude, angle) for the samples of a window, dx and dy being their offsets from the keypoint.
/// The octave's outermost samples have no gradient.
template <typename TVisit>
void Sift::VisitWindow(const TPlacement& place, float_t radius, const TVisit& visit) const {
  // The bounds leave out the outermost samples of the octave, which have no central difference.
  const std::int32_t reach = Truncate(radius);
  const std::ptrdiff_t plane = static_cast<std::ptrdiff_t>(place.w) * place.h;
  const float_t* const pairs = workBuffer.get() + 2 * plane * place.level;
  for (std::int32_t ys = std::max(-reach, 1 - place.yi); ys <= std::min(reach, place.h - 2 - place.yi); ++ys) {
    for (std::int32_t xs = std::max(-reach, 1 - place.xi); xs <= std::min(reach, place.w - 2 - place.xi); ++xs) {
      const std::int32_t x = place.xi + xs;
      const std::int32_t y = place.yi + ys;
      const float_t* const pair = pairs + 2 * (x + static_cast<std::ptrdiff_t>(y) * place.w);
      if (std::isfinite(pair[0])) {
        visit(static_cast<float_t>(x) - place.x, static_cast<float_t>(y) - place.y, pair[0], pair[1]);
      }
    }
  }
}

int Sift::ComputeOrientations(float_t* angles, Keypoint keypoint) {
  TPlacement place = {};
  if (!Place(keypoint, place)) {
    std::cerr << "!\n";
    return 0;
  }
  ComputeGradients(keypoint.o);
  const float_t sw = kOrientationWindow * place.sigma;
  const float_t radius = OrientationRadius(place.sigma);
  THistogram bins = {};
  VisitWindow(place, radius, [&](float_t dx, float_t dy, float_t magnitude, float_t angle) {
    const float_t r2 = dx * dx + dy * dy;
    if (r2 < radius * radius + 0.5F) {
      const float_t weight = Detail::expn(r2 / (2 * sw * sw));
      // An angle just below 2 pi can round up to the bin after the last, which is the first.
      const auto bin = static_cast<int>(kOrientationBins * angle / kTwoPi) % kOrientationBins;
      bins[bin] += weight * magnitude;
    }
  });
  for (int i = 0; i < kHistogramSmoothings; ++i) {
    SmoothHistogram(bins);
  }
  return FindPeaks(bins, angles);
}

void Sift::ComputeDescriptor(float_t* descriptor, Keypoint keypoint, float_t angle) {
  TPlacement place = {};
  const bool placed = Place(keypoint, place);
  const float_t bin = magnification * place.sigma;
  const float_t away =
      std::max(std::abs(place.x - static_cast<float_t>(place.xi)), std::abs(place.y - static_cast<float_t>(place.yi)));
  if (!placed || !DescriptorFits(bin, away) || !std::isfinite(angle)) {
    return;
  }
  ComputeGradients(keypoint.o);
  const float_t st = std::sin(angle);
  const float_t ct = std::cos(angle);
  std::fill(descriptor, descriptor + kDescriptorLength, 0.0F);
  VisitWindow(place, DescriptorRadius(bin), [&](float_t dx, float_t dy, float_t magnitude, float_t direction) {
    TDescriptorSample sample;
    sample.nx = (ct * dx + st * dy) / bin;
    sample.ny = (-st * dx + ct * dy) / bin;
    // Relative to the keypoint's own direction, which makes the descriptor follow a turn of the picture.
    sample.nt = kDirectionBins * Reduce(angle - direction) / kTwoPi;
    // The window has a sigma of half the width of the grid, two bins.
    sample.weight = Detail::expn((sample.nx * sample.nx + sample.ny * sample.ny) * 0.125F) * magnitude;
    Distribute(sample, descriptor);
  });
  if (normalizeDescriptors) {
    float_t* const end = descriptor + kDescriptorLength;
    Normalize(descriptor, end);
    // Length 1 takes a change of contrast out, the clamp a change of light that is not the same everywhere.
    std::transform(descriptor, end, descriptor, [](float_t value) { return std::min(value, kDescriptorClamp); });
    Normalize(descriptor, end);
  }
}

Sift::Keypoint Sift::MakeKeypoint(float_t x, float_t y, float_t sigma) const {
  // sigma = sigma0 * 2^(o + s / S), solved for o + s / S. An octave begins half a level above its level smin.
  const float_t phi = std::log2(sigma / sigma0);
  const auto steps = static_cast<float_t>(S);
  const std::int32_t octave = Truncate(std::floor(phi - (static_cast<float_t>(smin) + 0.5F) / steps));
  Keypoint keypoint;
  keypoint.o = Clamped(octave, omin, std::int64_t{omin} + O - 1);
  keypoint.s = (phi - static_cast<float_t>(keypoint.o)) * steps;
  keypoint.is = Clamped(Truncate(keypoint.s + 0.5F), std::int64_t{smin} + 1, std::int64_t{smax} - 2);
  const float_t period = std::ldexp(1.0F, keypoint.o);
  keypoint.ix = Truncate(x / period + 0.5F);
  keypoint.iy = Truncate(y / period + 0.5F);
  keypoint.x = x;
  keypoint.y = y;
  keypoint.sigma = sigma;
  return keypoint;
}

void Sift::Normalize(float_t* begin, float_t* end) {
  float_t sum = 0;
  for (const float_t* value = begin; value != end; ++value) {
    sum += *value * *value;
  }
  // The epsilon keeps zeros from becoming NaN; next to any real length it is lost in rounding.
  const float_t norm = std::sqrt(sum) + std::numeric_limits<float_t>::epsilon();
  for (float_t* value = begin; value != end; ++value) {
    *value /= norm;
  }
}

}  // namespace VL
