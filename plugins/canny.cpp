#include "plugins/canny.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "plugins/canny-rows.h"

namespace {

constexpr int kRadius = rows::kSmoothRadius;
constexpr int kTaps = 2 * kRadius + 1;
// Of the histogram of magnitudes from which the high threshold is read.
constexpr int kBins = 64;

rows::TSmoothWeights GaussianWeights() {
  std::array<double, kRadius + 1> weights;
  double sum = 0.0;
  for (int i = 0; i <= kRadius; ++i) {
    // Twice the variance is 4.
    weights[static_cast<std::size_t>(i)] = std::exp(-i * i / 4.0);
    sum += weights[static_cast<std::size_t>(i)] * (i == 0 ? 1.0 : 2.0);
  }
  rows::TSmoothWeights result;
  // Normalized in doubles and rounded once.
  std::transform(weights.begin(), weights.end(), result.begin(),
                 [sum](double weight) { return static_cast<float>(weight / sum); });
  return result;
}

/// The rows of a picture smoothed by the Gaussian, one after the other.
class TSmoother {
 public:
  explicit TSmoother(const TPicture& thePicture)
      : picture(thePicture), padded(static_cast<std::size_t>(thePicture.width + 2 * kRadius)) {
    lines.fill(std::vector<float>(static_cast<std::size_t>(thePicture.width)));
  }

  /// Row `y`; to be called for 0, 1, 2 and so on.
  void Process(int y, float* result) {
    // The filter is separable: each row is smoothed sideways once, kept for as long as a row within 6 of it needs it,
    // and then smoothed downwards.
    for (; next <= std::min(y + kRadius, picture.height - 1); ++next) {
      SmoothSideways(next);
    }
    rows::TSmoothTaps taps;
    for (int i = 0; i < kTaps; ++i) {
      taps[static_cast<std::size_t>(i)] = Line(std::clamp(y + i - kRadius, 0, picture.height - 1));
    }
    rows::Smooth(taps, weights, result, picture.width);
  }

 private:
  // A ring of 13 rows.
  float* Line(int y) { return lines[static_cast<std::size_t>(y % kTaps)].data(); }

  void SmoothSideways(int y) {
    const unsigned char* pixels = picture.Row(y);
    float* middle = padded.data() + kRadius;
    std::copy(pixels, pixels + picture.width, middle);
    // The edge pixels repeated, so that the border of the picture makes no edge.
    std::fill(padded.data(), middle, middle[0]);
    std::fill(middle + picture.width, middle + picture.width + kRadius, middle[picture.width - 1]);
    rows::TSmoothTaps taps;
    for (std::size_t i = 0; i < taps.size(); ++i) {
      taps[i] = padded.data() + i;
    }
    rows::Smooth(taps, weights, Line(y), picture.width);
  }

  const TPicture& picture;
  const rows::TSmoothWeights weights = GaussianWeights();
  std::vector<float> padded;
  /// The last rows that were smoothed sideways only.
  std::array<std::vector<float>, kTaps> lines;
  int next = 0;
};

/// What is known of the gradients, with a margin of one pixel where all is 0.
struct TGradients {
  explicit TGradients(const TPicture& picture)
      : stride(static_cast<std::size_t>(picture.width) + 2),
        magnitudes(stride * (static_cast<std::size_t>(picture.height) + 2)),
        states(magnitudes.size()) {}

  std::size_t Index(int x, int y) const {
    return static_cast<std::size_t>(y + 1) * stride + static_cast<std::size_t>(x) + 1;
  }

  std::size_t stride;
  std::vector<float> magnitudes;
  /// 1 where the magnitude is a maximum across its edge.
  std::vector<unsigned char> states;
  float greatest = 0.0f;
};

/// Differences of a row, central ones inside and one-sided ones at the ends.
void DifferentiateSideways(const float* row, int width, std::vector<float>& result) {
  for (int x = 1; x + 1 < width; ++x) {
    result[static_cast<std::size_t>(x)] = (row[x + 1] - row[x - 1]) * 0.5f;
  }
  result.front() = width > 1 ? row[1] - row[0] : 0.0f;
  result.back() = width > 1 ? row[width - 1] - row[width - 2] : 0.0f;
}

TGradients FindGradients(const TPicture& picture) {
  TGradients gradients(picture);
  TSmoother smoother(picture);
  const auto width = static_cast<std::size_t>(picture.width);
  std::array<std::vector<float>, 3> smooth;
  smooth.fill(std::vector<float>(width));
  std::array<std::vector<std::int32_t>, 2> directions;
  directions.fill(std::vector<std::int32_t>(width));
  std::vector<float> across(width);
  std::vector<float> down(width);
  std::vector<float> greatest(width);
  const auto row = [&](int y) { return smooth[static_cast<std::size_t>(y % 3)].data(); };
  const auto find = [&](int y) {
    const float* middle = gradients.magnitudes.data() + gradients.Index(0, y);
    rows::Maxima(middle - gradients.stride, middle, middle + gradients.stride,
                 directions[static_cast<std::size_t>(y % 2)].data(), gradients.states.data() + gradients.Index(0, y),
                 picture.width);
  };
  // Three smoothed rows are kept, for central differences, and two rows of directions: maxima are sought one row
  // behind, when the magnitudes below are known.
  smoother.Process(0, row(0));
  for (int y = 0; y < picture.height; ++y) {
    if (y + 1 < picture.height) {
      smoother.Process(y + 1, row(y + 1));
    }
    DifferentiateSideways(row(y), picture.width, across);
    const int above = std::max(0, y - 1);
    const int below = std::min(picture.height - 1, y + 1);
    // At the upper and lower border the difference is one-sided, and over one row.
    const float share = below - above == 2 ? 0.5f : 1.0f;
    std::transform(row(below), row(below) + width, row(above), down.begin(),
                   [share](float lower, float upper) { return (lower - upper) * share; });
    rows::Polar(across.data(), down.data(), gradients.magnitudes.data() + gradients.Index(0, y),
                directions[static_cast<std::size_t>(y % 2)].data(), greatest.data(), picture.width);
    if (y > 0) {
      find(y - 1);
    }
  }
  find(picture.height - 1);
  gradients.greatest = *std::max_element(greatest.begin(), greatest.end());
  return gradients;
}

/// The high threshold, as a magnitude.
float HighThreshold(const TGradients& gradients, const TPicture& picture) {
  // Several histograms: neighbors often fall into the same bin, and each would wait for the one before.
  std::array<std::array<std::uint32_t, kBins + 1>, 4> counts = {};
  std::vector<std::int32_t> bins(static_cast<std::size_t>(picture.width));
  for (int y = 0; y < picture.height; ++y) {
    // The greatest magnitude falls into the bin 64, which is why there are 65 counters.
    rows::Bins(gradients.magnitudes.data() + gradients.Index(0, y), static_cast<float>(kBins) / gradients.greatest,
               bins.data(), picture.width);
    for (std::size_t x = 0; x < bins.size(); ++x) {
      ++counts[x % counts.size()][static_cast<std::size_t>(bins[x])];
    }
  }
  // More than 0.7 of the pixels, in whole numbers. Without a bin before it, the last one is it.
  const std::int64_t wanted = std::int64_t{7} * picture.width * picture.height;
  std::int64_t sum = 0;
  int bin = 0;
  for (; bin < kBins - 1; ++bin) {
    for (const auto& part : counts) {
      sum += part[static_cast<std::size_t>(bin)];
    }
    if (10 * sum > wanted) {
      break;
    }
  }
  return gradients.greatest * static_cast<float>(bin + 1) / static_cast<float>(kBins);
}

/// Calls `visit` with the index of each element that is 2. They are few, and sought by eights.
template <typename TVisit>
requires(std::endian::native == std::endian::little) void VisitEdges(const std::vector<unsigned char>& states,
                                                                     const TVisit& visit) {
  std::size_t i = 0;
  for (std::uint64_t eight = 0; i + sizeof eight <= states.size(); i += sizeof eight) {
    std::memcpy(&eight, states.data() + i, sizeof eight);
    // The bit of the state 2 in each of eight bytes; 0 and 1 do not have it.
    for (std::uint64_t bits = eight & 0x0202020202020202; bits != 0; bits &= bits - 1) {
      visit(i + static_cast<std::size_t>(std::countr_zero(bits)) / 8);
    }
  }
  for (; i < states.size(); ++i) {
    if (states[i] == 2) {
      visit(i);
    }
  }
}

/// Marks the maxima above the high threshold, and what hangs together with them and is above the low one, with 2.
void MarkEdges(TGradients& gradients, const TPicture& picture) {
  const float high = HighThreshold(gradients, picture);
  std::vector<unsigned char>& states = gradients.states;
  // 0.4 is the ratio of the thresholds that the method is commonly run with; Canny himself advises two or three to one.
  rows::Grade(gradients.magnitudes.data(), 0.4f * high, high, states.data(), states.size());
  const std::size_t stride = gradients.stride;
  // The state 1 in one of three pixels next to each other.
  const auto hasCandidate = [&states](std::size_t middle) {
    return static_cast<int>(states[middle - 1] == 1) | static_cast<int>(states[middle] == 1) |
           static_cast<int>(states[middle + 1] == 1);
  };
  std::vector<std::size_t> open;
  VisitEdges(states, [&](std::size_t first) {
    // A stack of our own: a line that winds through a large picture would be too deep for recursion.
    for (open.push_back(first); !open.empty();) {
      const std::size_t edge = open.back();
      open.pop_back();
      // Three look-ups without a branch each; most edge pixels have no candidate left beside them.
      if ((hasCandidate(edge - stride) | hasCandidate(edge) | hasCandidate(edge + stride)) == 0) {
        continue;
      }
      for (const std::size_t middle : {edge - stride, edge, edge + stride}) {
        for (const std::size_t neighbor : {middle - 1, middle, middle + 1}) {
          if (states[neighbor] == 1) {
            states[neighbor] = 2;
            open.push_back(neighbor);
          }
        }
      }
    }
  });
}

}  // namespace

std::vector<TEdgePixel> FindEdges(const TPicture& picture) {
  std::vector<TEdgePixel> edges;
  TGradients gradients = FindGradients(picture);
  if (!(gradients.greatest > 0.0f)) {
    return edges;
  }
  MarkEdges(gradients, picture);
  // The plane has a border of one pixel around the picture: its first row and column are number -1. Rows are counted
  // along, which costs less than a division for each edge.
  int y = -1;
  std::size_t end = gradients.stride;
  VisitEdges(gradients.states, [&](std::size_t i) {
    for (; i >= end; end += gradients.stride) {
      ++y;
    }
    edges.push_back({static_cast<int>(i + gradients.stride - end) - 1, y});
  });
  return edges;
}
