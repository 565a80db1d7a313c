#include "plugins/canny.h"

#include <array>
#include <cmath>

namespace {

constexpr int kRadius = 6;
constexpr int kTaps = 2 * kRadius + 1;
constexpr int kBins = 64;

/// The weights from the middle outwards.
std::array<float, kRadius + 1> GaussianWeights() {
  std::array<double, kRadius + 1> weights;
  double sum = 0.0;
  for (int i = 0; i <= kRadius; ++i) {
    // Twice the variance is 4.
    weights[static_cast<std::size_t>(i)] = std::exp(-i * i / 4.0);
    sum += weights[static_cast<std::size_t>(i)] * (i == 0 ? 1.0 : 2.0);
  }
  std::array<float, kRadius + 1> result;
  std::transform(weights.begin(), weights.end(), result.begin(),
                 [sum](double weight) { return static_cast<float>(weight / sum); });
  return result;
}

/// The rows of a picture smoothed by the Gaussian, one after the other.
class TSmoother {
 public:
  explicit TSmoother(const TPicture& picture)
      : picture(picture), padded(static_cast<std::size_t>(picture.width + 2 * kRadius)) {
    rows.fill(std::vector<float>(static_cast<std::size_t>(picture.width)));
  }

  /// Row `y`; to be called for 0, 1, 2 and so on.
  void Process(int y, float* result) {
    for (; next <= std::min(y + kRadius, picture.height - 1); ++next) {
      SmoothSideways(next);
    }
    const auto row = [&](int offset) {
      return rows[static_cast<std::size_t>(std::clamp(y + offset, 0, picture.height - 1) % kTaps)].data();
    };
    const std::array<const float*, kTaps> from = {row(-6), row(-5), row(-4), row(-3), row(-2), row(-1), row(0),
                                                  row(1),  row(2),  row(3),  row(4),  row(5),  row(6)};
    const auto w = weights;
    for (int x = 0; x < picture.width; ++x) {
      result[x] = w[0] * from[6][x] + w[1] * (from[5][x] + from[7][x]) + w[2] * (from[4][x] + from[8][x]) +
                  w[3] * (from[3][x] + from[9][x]) + w[4] * (from[2][x] + from[10][x]) +
                  w[5] * (from[1][x] + from[11][x]) + w[6] * (from[0][x] + from[12][x]);
    }
  }

 private:
  void SmoothSideways(int y) {
    const unsigned char* pixels = picture.Row(y);
    float* middle = padded.data() + kRadius;
    std::copy(pixels, pixels + picture.width, middle);
    std::fill(padded.data(), middle, middle[0]);
    std::fill(middle + picture.width, middle + picture.width + kRadius, middle[picture.width - 1]);
    float* result = rows[static_cast<std::size_t>(y % kTaps)].data();
    const auto w = weights;
    for (int x = 0; x < picture.width; ++x) {
      const float* p = middle + x;
      result[x] = w[0] * p[0] + w[1] * (p[-1] + p[1]) + w[2] * (p[-2] + p[2]) + w[3] * (p[-3] + p[3]) +
                  w[4] * (p[-4] + p[4]) + w[5] * (p[-5] + p[5]) + w[6] * (p[-6] + p[6]);
    }
  }

  const TPicture& picture;
  const std::array<float, kRadius + 1> weights = GaussianWeights();
  std::vector<float> padded;
  /// The last rows that were smoothed sideways only.
  std::array<std::vector<float>, kTaps> rows;
  int next = 0;
};

/// Magnitude and direction of the gradient, with a margin of one pixel where the magnitude is 0.
struct TGradients {
  explicit TGradients(const TPicture& picture)
      : stride(static_cast<std::size_t>(picture.width) + 2),
        magnitudes(stride * (static_cast<std::size_t>(picture.height) + 2)),
        directions(magnitudes.size()) {}

  std::size_t Index(int x, int y) const {
    return static_cast<std::size_t>(y + 1) * stride + static_cast<std::size_t>(x) + 1;
  }

  std::size_t stride;
  std::vector<float> magnitudes;
  /// 0 sideways, 1 upwards, 2 and 3 along the falling and the rising diagonal.
  std::vector<unsigned char> directions;
  float greatest = 0.0f;
};

void DifferentiateRow(const float* row, const float* upper, const float* lower, float distance, int width,
                      std::vector<float>& sideways, float* magnitudes, unsigned char* directions) {
  constexpr auto kShallow = 0.41421356f;  // tan(pi / 8)
  constexpr auto kSteep = 2.41421356f;    // tan(3 pi / 8)
  for (int x = 1; x + 1 < width; ++x) {
    sideways[static_cast<std::size_t>(x)] = (row[x + 1] - row[x - 1]) * 0.5f;
  }
  sideways.front() = width > 1 ? row[1] - row[0] : 0.0f;
  sideways.back() = width > 1 ? row[width - 1] - row[width - 2] : 0.0f;
  const float* across = sideways.data();
  for (int x = 0; x < width; ++x) {
    const float gx = across[x];
    const float gy = (lower[x] - upper[x]) * distance;
    magnitudes[x] = std::sqrt(gx * gx + gy * gy);
    const float width = std::fabs(gx);
    const float height = std::fabs(gy);
    const int diagonal = gx * gy > 0.0f ? 2 : 3;
    const int steepOrDiagonal = height > kSteep * width ? 1 : diagonal;
    directions[x] = static_cast<unsigned char>(height < kShallow * width ? 0 : steepOrDiagonal);
  }
}

TGradients FindGradients(const TPicture& picture) {
  TGradients gradients(picture);
  TSmoother smoother(picture);
  std::array<std::vector<float>, 3> rows;
  rows.fill(std::vector<float>(static_cast<std::size_t>(picture.width)));
  std::vector<float> sideways(static_cast<std::size_t>(picture.width));
  std::vector<float> greatest(static_cast<std::size_t>(picture.width));
  const auto row = [&](int y) { return rows[static_cast<std::size_t>(y % 3)].data(); };
  smoother.Process(0, row(0));
  for (int y = 0; y < picture.height; ++y) {
    if (y + 1 < picture.height) {
      smoother.Process(y + 1, row(y + 1));
    }
    const int above = std::max(0, y - 1);
    const int below = std::min(picture.height - 1, y + 1);
    float* magnitudes = gradients.magnitudes.data() + gradients.Index(0, y);
    DifferentiateRow(row(y), row(above), row(below), below - above == 2 ? 0.5f : 1.0f, picture.width, sideways,
                     magnitudes, gradients.directions.data() + gradients.Index(0, y));
    for (std::size_t x = 0; x < greatest.size(); ++x) {
      greatest[x] = std::max(greatest[x], magnitudes[x]);
    }
  }
  gradients.greatest = *std::max_element(greatest.begin(), greatest.end());
  return gradients;
}

/// The high threshold, as a magnitude.
float HighThreshold(const TGradients& gradients, const TPicture& picture) {
  std::array<std::array<std::uint32_t, kBins + 1>, 4> counts = {};
  const float scale = static_cast<float>(kBins) / gradients.greatest;
  for (int y = 0; y < picture.height; ++y) {
    const float* row = gradients.magnitudes.data() + gradients.Index(0, y);
    for (int x = 0; x < picture.width; ++x) {
      // Several histograms: neighbours often fall into the same bin, and each would wait for the one before.
      ++counts[static_cast<std::size_t>(x % 4)][static_cast<std::size_t>(static_cast<int>(row[x] * scale))];
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

}  // namespace

std::vector<unsigned char> FindEdges(const TPicture& picture) {
  const auto width = static_cast<std::size_t>(picture.width);
  std::vector<unsigned char> edges(width * static_cast<std::size_t>(picture.height));
  const TGradients gradients = FindGradients(picture);
  if (!(gradients.greatest > 0.0f)) {
    return edges;
  }
  const float high = HighThreshold(gradients, picture);
  const float low = 0.4f * high;
  // The neighbour after a pixel, by direction.
  const std::array<std::size_t, 4> after = {1, gradients.stride, gradients.stride + 1, gradients.stride - 1};
  // 1: above the low threshold; 2: an edge.
  std::vector<unsigned char> states(gradients.magnitudes.size());
  std::vector<std::size_t> open;
  for (int y = 0; y < picture.height; ++y) {
    const std::size_t begin = gradients.Index(0, y);
    for (std::size_t i = begin; i < begin + width; ++i) {
      const float magnitude = gradients.magnitudes[i];
      if (!(magnitude > low)) {
        continue;
      }
      const std::size_t step = after[gradients.directions[i]];
      if (magnitude > gradients.magnitudes[i - step] && magnitude >= gradients.magnitudes[i + step]) {
        states[i] = 1;
        if (magnitude > high) {
          states[i] = 2;
          open.push_back(i);
        }
      }
    }
  }
  const std::array<std::size_t, 4> around = {1, gradients.stride - 1, gradients.stride, gradients.stride + 1};
  while (!open.empty()) {
    const std::size_t i = open.back();
    open.pop_back();
    for (const std::size_t step : around) {
      for (const std::size_t neighbour : {i - step, i + step}) {
        if (states[neighbour] == 1) {
          states[neighbour] = 2;
          open.push_back(neighbour);
        }
      }
    }
  }
  for (int y = 0; y < picture.height; ++y) {
    const unsigned char* row = states.data() + gradients.Index(0, y);
    std::transform(row, row + width, edges.begin() + static_cast<std::ptrdiff_t>(width) * y,
                   [](unsigned char state) { return static_cast<unsigned char>(state >> 1); });
  }
  return edges;
}
