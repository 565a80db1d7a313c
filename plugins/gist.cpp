// "gist": 512 numbers with a sum of 1, or zeros where the picture is flat: the spatial envelope of a scene, the mean
// strength of 4 scales x 8 orientations of Gabor-like filters in 4 x 4 blocks of the picture reduced to 128 x 128.
// Element 16 x (8 x scale + orientation) + 4 x column + row; the finest scale first; orientation 0 answers to upright
// edges, 4 to level ones.
//
// A. Oliva, A. Torralba, "Modeling the Shape of the Scene: a Holistic Representation of the Spatial Envelope", IJCV
// 42(3), 2001, with the parameters of the authors' program. They compare the unscaled numbers by Euclid's distance. The
// picture is reduced by a triangle filter that reaches one step to both sides, whose taps outside the picture are left
// out.
// Lines of a filter's spectrum whose gains stay below 1e-7 are taken for 0.

#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <numeric>
#include <vector>

#include <fftw3.h>

#include "plugins/descriptor.h"

const TDescriptor kDescriptor = {"gist", "The spatial envelope: 4 scales x 8 orientations in 4 x 4 blocks", 512, false};

namespace {

/// The side of the reduced picture; with the margin of the prefilter; with the margin of the filters.
constexpr int kSide = 128;
constexpr int kPrefilterMargin = 5;
constexpr int kPrefilterSide = kSide + 2 * kPrefilterMargin;
constexpr int kFilterMargin = 32;
constexpr int kFilterSide = kSide + 2 * kFilterMargin;
constexpr int kScales = 4;
constexpr int kOrientations = 8;
constexpr int kBlocks = 4;
constexpr int kBlockSide = kSide / kBlocks;

/// Plans are estimated, not measured, and take the library's plain code: what it has for the processor's vectors rounds
/// differently, and the numbers shall be the same on every machine.
constexpr unsigned kPlanFlags = FFTW_ESTIMATE | FFTW_NO_SIMD;

using TComplex = std::array<float, 2>;

fftwf_complex* Raw(std::vector<TComplex>& numbers) {
  return reinterpret_cast<fftwf_complex*>(numbers.data());
}

struct TPlanDeleter {
  void operator()(fftwf_plan plan) const { fftwf_destroy_plan(plan); }
};
using TPlan = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, TPlanDeleter>;

using TPlane = std::vector<float>;

/// Where element `i` of a line stands in a plane of lines of `length`.
constexpr std::size_t Index(int line, int length, int i) {
  return static_cast<std::size_t>(line) * static_cast<std::size_t>(length) + static_cast<std::size_t>(i);
}

/// The taps of one row or column of the reduced picture.
struct TTaps {
  int first;
  std::vector<double> weights;
};

/// The taps of the middle 128 of a side that is scaled by `factor`.
std::vector<TTaps> MakeTaps(int size, double factor) {
  const int scaled = static_cast<int>(std::lround(size * factor));
  const double step = static_cast<double>(size) / scaled;
  const double reach = std::max(1.0, step);
  // The middle of the longer side.
  const int offset = (scaled - kSide) / 2;
  std::vector<TTaps> taps(kSide);
  for (int i = 0; i < kSide; ++i) {
    const double center = (offset + i + 0.5) * step - 0.5;
    const int first = std::max(0, static_cast<int>(std::ceil(center - reach)));
    const int last = std::min(size - 1, static_cast<int>(std::floor(center + reach)));
    TTaps& own = taps[static_cast<std::size_t>(i)];
    own.first = first;
    double sum = 0.0;
    for (int j = first; j <= last; ++j) {
      // A triangle as wide as the reduction: every source pixel counts, and none twice as much as its neighbors.
      own.weights.push_back(std::max(0.0, 1.0 - std::fabs(j - center) / reach));
      sum += own.weights.back();
    }
    for (double& weight : own.weights) {
      weight /= sum;
    }
  }
  return taps;
}

/// The picture scaled so that its shorter side is 128, and its middle square cut out.
std::vector<double> Reduce(const TPicture& picture) {
  const double factor =
      std::max(static_cast<double>(kSide) / picture.width, static_cast<double>(kSide) / picture.height);
  const auto columns = MakeTaps(picture.width, factor);
  const auto rows = MakeTaps(picture.height, factor);
  const int left = columns.front().first;
  const int right = columns.back().first + static_cast<int>(columns.back().weights.size());
  std::vector<double> sums(static_cast<std::size_t>(right - left));
  std::vector<double> result;
  result.reserve(std::size_t{kSide} * kSide);
  // Downwards first, into one row of sums: only the part of the picture that the middle square needs is read.
  for (const TTaps& row : rows) {
    std::fill(sums.begin(), sums.end(), 0.0);
    for (std::size_t i = 0; i < row.weights.size(); ++i) {
      const unsigned char* pixels = picture.Row(row.first + static_cast<int>(i)) + left;
      const double weight = row.weights[i];
      for (std::size_t x = 0; x < sums.size(); ++x) {
        sums[x] += weight * pixels[x];
      }
    }
    for (const TTaps& column : columns) {
      result.push_back(
          std::inner_product(column.weights.begin(), column.weights.end(), sums.begin() + (column.first - left), 0.0));
    }
  }
  return result;
}

/// The logarithms of the levels stretched to 0..255, plus 1. Zeros if the levels do not differ but by their rounding.
TPlane Stretch(const std::vector<double>& levels) {
  const auto [least, most] = std::minmax_element(levels.begin(), levels.end());
  const double base = *least;
  const double range = *most - base;
  TPlane result(levels.size());
  // Below that the differences come from the rounding of the weights, and stretching would make noise of them.
  if (range > 1e-6) {
    std::transform(levels.begin(), levels.end(), result.begin(), [&](double level) {
      // Logarithms make the answer depend on ratios of light, as the authors do before their prefilter.
      return static_cast<float>(std::log1p((level - base) * 255.0 / std::max(1.0, range)));
    });
  }
  return result;
}

/// The plane with a margin around it, reflected at the border, the edge pixel included.
TPlane Pad(const TPlane& plane, int side, int margin) {
  const auto source = [side](int position) {
    // Reflection keeps the border from acting as an edge, which all filters would answer to.
    return position < 0 ? -1 - position : (position >= side ? 2 * side - 1 - position : position);
  };
  TPlane padded;
  padded.reserve(static_cast<std::size_t>(side + 2 * margin) * static_cast<std::size_t>(side + 2 * margin));
  for (int y = -margin; y < side + margin; ++y) {
    for (int x = -margin; x < side + margin; ++x) {
      padded.push_back(plane[Index(source(y), side, source(x))]);
    }
  }
  return padded;
}

/// Takes the slow changes of light out, and evens out the local contrast.
class TPrefilter {
 public:
  TPrefilter()
      : plane(kCount),
        spectrum(static_cast<std::size_t>(kPrefilterSide) * kHalf),
        gains(spectrum.size()),
        forward(fftwf_plan_dft_r2c_2d(kPrefilterSide, kPrefilterSide, plane.data(), Raw(spectrum), kPlanFlags)),
        backward(fftwf_plan_dft_c2r_2d(kPrefilterSide, kPrefilterSide, Raw(spectrum), plane.data(), kPlanFlags)) {
    // Half of the amplitude at 4 cycles a picture.
    // exp(-f^2 / width^2) is one half at f = 4. Divided by the number of samples, since the library's two transforms
    // multiply by it.
    const double width = 4.0 / std::sqrt(std::log(2.0));
    for (int y = 0; y < kPrefilterSide; ++y) {
      const int fy = y < kPrefilterSide / 2 ? y : y - kPrefilterSide;
      for (int fx = 0; fx < kHalf; ++fx) {
        gains[Index(y, kHalf, fx)] = static_cast<float>(std::exp(-(fx * fx + fy * fy) / (width * width)) / kCount);
      }
    }
  }

  TPlane Process(const TPlane& logarithms) {
    TPlane padded = Pad(logarithms, kSide, kPrefilterMargin);
    std::copy(padded.begin(), padded.end(), plane.begin());
    LowPass();
    for (std::size_t i = 0; i < plane.size(); ++i) {
      padded[i] -= plane[i];
      // The local variance: what is left of the slow changes, squared and smoothed by the same filter.
      plane[i] = padded[i] * padded[i];
    }
    LowPass();
    TPlane result;
    result.reserve(std::size_t{kSide} * kSide);
    for (int y = kPrefilterMargin; y < kPrefilterMargin + kSide; ++y) {
      for (int x = kPrefilterMargin; x < kPrefilterMargin + kSide; ++x) {
        const std::size_t i = Index(y, kPrefilterSide, x);
        // 0.2 is the authors' floor of the local contrast, which keeps flat areas from being blown up. fabs, since the
        // smoothed squares may fall below 0 by rounding.
        result.push_back(padded[i] / (0.2f + std::sqrt(std::fabs(plane[i]))));
      }
    }
    return result;
  }

 private:
  static constexpr int kHalf = kPrefilterSide / 2 + 1;
  static constexpr std::size_t kCount = std::size_t{kPrefilterSide} * kPrefilterSide;

  void LowPass() {
    fftwf_execute(forward.get());
    for (std::size_t i = 0; i < spectrum.size(); ++i) {
      spectrum[i] = {spectrum[i][0] * gains[i], spectrum[i][1] * gains[i]};
    }
    fftwf_execute(backward.get());
  }

  /// The plans know where these stand, so nothing may replace them.
  TPlane plane;
  std::vector<TComplex> spectrum;
  TPlane gains;
  TPlan forward;
  TPlan backward;
};

/// The gain of a filter at a frequency, as its definition has it.
double Gain(int scale, int orientation, int fx, int fy) {
  const double radius = std::sqrt(static_cast<double>(fx * fx + fy * fy)) / kFilterSide;
  const double center = 0.3 / std::pow(1.85, scale);
  // The angle between frequency and filter, on the circle.
  const double turned =
      std::remainder(std::atan2(fy, fx) + orientation * std::numbers::pi / kOrientations, 2.0 * std::numbers::pi);
  const double distance = radius / center - 1.0;
  return std::exp(-3.5 * distance * distance - 2.0 * std::numbers::pi * turned * turned);
}

/// One filter: the lines of its spectrum that are not negligible, rows or columns, whichever are fewer. They stand next
/// to each other on the circle of frequencies; where they begin only turns the phase of the answer.
struct TFilter {
  bool isByColumns = false;
  int begin = 0;
  int lines = 0;
  /// Line by line, divided by the number of pixels.
  TPlane gains;
  TPlan plan;
};

class TFilterBank {
 public:
  TFilterBank()
      : plane(kCount),
        half(static_cast<std::size_t>(kFilterSide) * kHalf),
        rows(kCount),
        columns(kCount),
        lines(kCount),
        turned(kCount),
        answer(std::size_t{kSide} * kFilterSide),
        forward(fftwf_plan_dft_r2c_2d(kFilterSide, kFilterSide, plane.data(), Raw(half), kPlanFlags)) {
    const int length = kFilterSide;
    acrossLines.reset(fftwf_plan_many_dft(1, &length, kSide, Raw(turned) + Index(kFilterMargin, kFilterSide, 0),
                                          nullptr, 1, kFilterSide, Raw(answer), nullptr, 1, kFilterSide, FFTW_BACKWARD,
                                          kPlanFlags));
    for (int i = 0; i < kScales * kOrientations; ++i) {
      filters.push_back(MakeFilter(i / kOrientations, i % kOrientations));
    }
  }

  void Process(const TPlane& picture, std::span<double> result) {
    const TPlane padded = Pad(picture, kSide, kFilterMargin);
    std::copy(padded.begin(), padded.end(), plane.begin());
    fftwf_execute(forward.get());
    SpreadSpectrum();
    for (std::size_t i = 0; i < filters.size(); ++i) {
      Apply(filters[i]);
      Average(filters[i].isByColumns, result.subspan(i * kBlocks * kBlocks, std::size_t{kBlocks} * kBlocks));
    }
  }

 private:
  static constexpr int kHalf = kFilterSide / 2 + 1;
  static constexpr std::size_t kCount = std::size_t{kFilterSide} * kFilterSide;
  static constexpr double kNegligible = 1e-7;

  static int Frequency(int index) { return index < kFilterSide / 2 ? index : index - kFilterSide; }

  /// The gains of a filter row by row, or column by column.
  static std::vector<double> AllGains(int scale, int orientation, bool isByColumns) {
    std::vector<double> gains;
    gains.reserve(kCount);
    for (int line = 0; line < kFilterSide; ++line) {
      for (int i = 0; i < kFilterSide; ++i) {
        gains.push_back(isByColumns ? Gain(scale, orientation, Frequency(line), Frequency(i))
                                    : Gain(scale, orientation, Frequency(i), Frequency(line)));
      }
    }
    return gains;
  }

  static bool IsNegligible(const std::vector<double>& gains, int line) {
    const auto begin = gains.begin() + static_cast<std::ptrdiff_t>(line) * kFilterSide;
    return std::all_of(begin, begin + kFilterSide, [](double gain) { return gain < kNegligible; });
  }

  TFilter MakeFilter(int scale, int orientation) {
    TFilter filter;
    std::vector<double> best;
    for (const bool isByColumns : {false, true}) {
      std::vector<double> gains = AllGains(scale, orientation, isByColumns);
      // The longest gap on the circle; what is left is one run.
      int gap = 0;
      int afterGap = 0;
      // Twice around, so that a gap across the end of the spectrum is found whole.
      for (int i = 0, run = 0; i < 2 * kFilterSide; ++i) {
        run = IsNegligible(gains, i % kFilterSide) ? std::min(run + 1, kFilterSide) : 0;
        if (run > gap) {
          gap = run;
          afterGap = (i + 1) % kFilterSide;
        }
      }
      if (best.empty() || kFilterSide - gap < filter.lines) {
        filter.isByColumns = isByColumns;
        filter.begin = afterGap;
        filter.lines = kFilterSide - gap;
        best = std::move(gains);
      }
    }
    for (int i = 0; i < filter.lines * kFilterSide; ++i) {
      const int line = (filter.begin + i / kFilterSide) % kFilterSide;
      // Divided by the number of samples, as the transforms are not normalized.
      filter.gains.push_back(static_cast<float>(best[Index(line, kFilterSide, i % kFilterSide)] / kCount));
    }
    const int length = kFilterSide;
    filter.plan.reset(fftwf_plan_many_dft(1, &length, filter.lines, Raw(lines), nullptr, 1, kFilterSide, Raw(turned),
                                          nullptr, kFilterSide, 1, FFTW_BACKWARD, kPlanFlags));
    return filter;
  }

  /// The transform of real numbers comes as a half: the other is its mirror image.
  void SpreadSpectrum() {
    for (int y = 0; y < kFilterSide; ++y) {
      for (int x = 0; x < kFilterSide; ++x) {
        const bool isMirrored = x >= kHalf;
        const int fromX = isMirrored ? kFilterSide - x : x;
        // The transform of real numbers is symmetric: F(-x, -y) is the conjugate of F(x, y).
        const int fromY = isMirrored ? (kFilterSide - y) % kFilterSide : y;
        const TComplex& value = half[Index(fromY, kHalf, fromX)];
        const TComplex number = {value[0], isMirrored ? -value[1] : value[1]};
        rows[Index(y, kFilterSide, x)] = number;
        columns[Index(x, kFilterSide, y)] = number;
      }
    }
  }

  /// Leaves the complex answer, of which the filter's own direction stands in full length, in lines across it.
  void Apply(const TFilter& filter) {
    const std::vector<TComplex>& spectrum = filter.isByColumns ? columns : rows;
    for (int line = 0; line < filter.lines; ++line) {
      const std::size_t from = Index((filter.begin + line) % kFilterSide, kFilterSide, 0);
      const std::size_t to = Index(line, kFilterSide, 0);
      for (std::size_t i = 0; i < kFilterSide; ++i) {
        const float gain = filter.gains[to + i];
        lines[to + i] = {spectrum[from + i][0] * gain, spectrum[from + i][1] * gain};
      }
    }
    for (std::size_t line = 0; line < kFilterSide; ++line) {
      const auto begin = turned.begin() + static_cast<std::ptrdiff_t>(line * kFilterSide);
      std::fill(begin + filter.lines, begin + kFilterSide, TComplex());
    }
    // Only the lines that are not negligible are transformed; zeros need no transform. The result comes turned, ready
    // for the second pass along the other axis.
    fftwf_execute(filter.plan.get());
    fftwf_execute(acrossLines.get());
  }

  /// The mean magnitude in each block.
  void Average(bool isByColumns, std::span<double> blocks) const {
    for (int i = 0; i < kBlocks; ++i) {
      std::array<float, kSide> sums = {};
      for (int line = i * kBlockSide; line < (i + 1) * kBlockSide; ++line) {
        const TComplex* from = answer.data() + Index(line, kFilterSide, kFilterMargin);
        for (std::size_t j = 0; j < kSide; ++j) {
          // The magnitude of the complex answer, which does not depend on the phase of what is seen.
          sums[j] += std::sqrt(from[j][0] * from[j][0] + from[j][1] * from[j][1]);
        }
      }
      for (int j = 0; j < kBlocks; ++j) {
        double sum = 0.0;
        for (int k = j * kBlockSide; k < (j + 1) * kBlockSide; ++k) {
          sum += sums[static_cast<std::size_t>(k)];
        }
        // A line of the answer is a column of the picture, or a row if the filter is by columns.
        const int block = isByColumns ? kBlocks * j + i : kBlocks * i + j;
        blocks[static_cast<std::size_t>(block)] = sum / (kBlockSide * kBlockSide);
      }
    }
  }

  /// The plans know where these stand, so nothing may replace them.
  TPlane plane;
  std::vector<TComplex> half;
  std::vector<TComplex> rows;
  std::vector<TComplex> columns;
  std::vector<TComplex> lines;
  std::vector<TComplex> turned;
  std::vector<TComplex> answer;
  TPlan forward;
  TPlan acrossLines;
  std::vector<TFilter> filters;
};

}  // namespace

void Describe(const TPicture& picture, std::span<double> result) {
  // Made at the first picture and kept: planning and gains take longer than a picture.
  static TPrefilter prefilter;
  static TFilterBank bank;
  bank.Process(prefilter.Process(Stretch(Reduce(picture))), result);
  // A flat picture has zeros throughout, without any rounding.
  ScaleToUnitSum(result);
}
