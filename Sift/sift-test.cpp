#include "Sift/sift.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/targets.h>
#ifdef __linux__
#include <sys/resource.h>
#endif

#include "Sift/sift-parameters.h"

namespace {

using Keypoint = VL::Sift::Keypoint;
constexpr double kPi = std::numbers::pi;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Pictures and objects

struct TPicture {
  int width;
  int height;
  std::vector<float> values;

  TPicture(int theWidth, int theHeight, const std::function<double(double, double)>& value)
      : width(theWidth), height(theHeight) {
    for (int y = 0; y < theHeight; ++y) {
      for (int x = 0; x < theWidth; ++x) {
        values.push_back(static_cast<float>(value(x, y)));
      }
    }
  }
};

TPicture Noise(int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  return {width, height, [&](double, double) { return static_cast<double>(random() % 1000) / 1000; }};
}

double Gaussian(double dx, double dy, double sigma) {
  return std::exp(-0.5 * (dx * dx + dy * dy) / (sigma * sigma));
}

/// A scene of blobs that can be sampled anywhere, over -64 to 320 along both axes.
double Scene(double x, double y) {
  struct TBlob {
    double x, y, sigma, height;
  };
  static const std::vector<TBlob> blobs = [] {
    std::mt19937 random(5);
    const auto uniform = [&](double from, double to) {
      return from + (to - from) * static_cast<double>(random() % 65536) / 65536.0;
    };
    std::vector<TBlob> result(900);
    for (TBlob& blob : result) {
      blob = {uniform(-64, 320), uniform(-64, 320), uniform(1.5, 7), uniform(-0.4, 0.4)};
    }
    return result;
  }();
  double sum = 0.5;
  for (const TBlob& blob : blobs) {
    if (std::abs(x - blob.x) + std::abs(y - blob.y) < 6 * blob.sigma) {
      sum += blob.height * Gaussian(x - blob.x, y - blob.y, blob.sigma);
    }
  }
  return sum;
}

using TParameters = VL::TSiftParameters;

struct TTestSift : VL::Sift {
  TTestSift(const TPicture& picture, const TParameters& p)
      : Sift(picture.values.data(), picture.width, picture.height, p.sigman, p.sigma0, p.O, p.S, p.omin, p.smin,
             p.smax) {}
  std::vector<Keypoint> Detect(float threshold = TParameters().threshold,
                               float edgeThreshold = TParameters().edgeThreshold) {
    DetectKeypoints(threshold, edgeThreshold);
    return {KeypointsBegin(), KeypointsEnd()};
  }
  std::vector<float> Orientations(const Keypoint& keypoint) {
    std::vector<float> angles(kMaxOrientations);
    angles.resize(ComputeOrientations(angles.data(), keypoint));
    return angles;
  }
  std::vector<float> Descriptor(const Keypoint& keypoint, float angle, float before = 0) {
    std::vector<float> descriptor(kDescriptorLength, before);
    ComputeDescriptor(descriptor.data(), keypoint, angle);
    return descriptor;
  }
};

/// The same to the bit, but any NaN for a NaN.
bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) {
    return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y) || (std::isnan(x) && std::isnan(y));
  });
}

double Distance(const std::vector<float>& a, const std::vector<float>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    sum += (a[i] - b[i]) * (a[i] - b[i]);
  }
  return std::sqrt(sum);
}

/// Runs `check` on every SIMD level that this machine has.
void OnEachTarget(const std::function<void()>& check) {
  const auto targets = hwy::SupportedAndGeneratedTargets();
  EXPECT_FALSE(targets.empty());
  for (const auto target : targets) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    check();
  }
  hwy::SetSupportedTargetsForTest(0);
}

// sift-conv

TEST(ConvolveTranspose, RepeatsEdgesAndTransposes) {
  const int source[] = {1, 2, 3, 4, 5, 6};
  const int filter[] = {1, 10, 100};
  int result[6] = {};
  VL::ConvolveTranspose(result, source, 3, 2, filter, 1);
  EXPECT_EQ(std::vector<int>(result, result + 6), (std::vector<int>{211, 544, 321, 654, 332, 665}));
  // Wider than the picture: 1 * 7 + 10 * 7 + 100 * 7 + 1000 * 8 + 10000 * 8 and so on.
  const double two[] = {7, 8};
  const double wide[] = {1, 10, 100, 1000, 10000};
  double out[2] = {};
  VL::ConvolveTranspose(out, two, 2, 1, wide, 2);
  EXPECT_EQ(out[0], 88777);
  EXPECT_EQ(out[1], 88877);
}

std::vector<float> PlainConvolve(const TPicture& picture, const std::vector<float>& filter) {
  const auto radius = static_cast<int>(filter.size() / 2);
  std::vector<float> work(picture.values.size());
  std::vector<float> result(picture.values.size());
  VL::ConvolveTranspose(work.data(), picture.values.data(), picture.width, picture.height, filter.data(), radius);
  VL::ConvolveTranspose(result.data(), work.data(), picture.height, picture.width, filter.data(), radius);
  return result;
}

/// Source rows arrive only when a band needs them; until then they are NaN.
std::vector<float> ConvolveInBands(const TPicture& picture, const std::vector<float>& filter, int band, bool inPlace) {
  const auto& [width, height, values] = picture;
  const auto radius = static_cast<int>(filter.size() / 2);
  std::vector<float> source(values.size(), kNaN);
  std::vector<float> work(values.size());
  std::vector<float> result(values.size());
  float* const destination = inPlace ? source.data() : result.data();
  int arrived = 0;
  for (int begin = 0; begin < height; begin += band) {
    const int end = std::min(begin + band, height);
    for (; arrived < std::min(end + radius, height); ++arrived) {
      std::copy_n(values.begin() + std::ptrdiff_t{arrived} * width, width,
                  source.begin() + std::ptrdiff_t{arrived} * width);
    }
    VL::Detail::Convolve({destination, work.data(), source.data(), width, height, filter.data(), radius}, begin, end);
  }
  return inPlace ? source : result;
}

TEST(Convolve, EqualsThePlainLoopsOnEveryTarget) {
  constexpr int kSizes[][2] = {{1, 1}, {1, 40}, {40, 1}, {3, 2}, {16, 16}, {17, 5}, {131, 70}, {700, 33}, {4200, 3}};
  OnEachTarget([&] {
    for (const auto& [width, height] : kSizes) {
      TPicture picture = Noise(width, height, 3);
      if (width > 100) {
        picture.values[width / 2] = kNaN;
        picture.values[3] = kInfinity;
      }
      for (const int radius : {0, 1, 5, 13, 60, VL::Detail::kLargestRadius}) {
        if (radius > 100 && width * height > 100) {
          continue;  // the plain loops would take seconds
        }
        const std::vector<float> filter = Noise(2 * radius + 1, 1, 4).values;
        const std::vector<float> expected = PlainConvolve(picture, filter);
        for (const bool inPlace : {false, true}) {
          for (const int band : {height, 1, 7}) {
            EXPECT_TRUE(SameBits(ConvolveInBands(picture, filter, band, inPlace), expected))
                << width << " x " << height << ", radius " << radius << ", band " << band << ", in place " << inPlace;
          }
        }
      }
    }
  });
}

TEST(Convolve, StaysCloseToADoubleConvolutionInThePlane) {
  constexpr int kRadius = 9;
  const TPicture picture = Noise(61, 43, 5);
  std::vector<float> filter;
  for (int k = -kRadius; k <= kRadius; ++k) {
    filter.push_back(static_cast<float>(Gaussian(k, 0, 2.5) / (2.5 * std::sqrt(2 * kPi))));
  }
  const std::vector<float> result = ConvolveInBands(picture, filter, picture.height, false);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      double sum = 0;
      for (int v = -kRadius; v <= kRadius; ++v) {
        for (int u = -kRadius; u <= kRadius; ++u) {
          const int column = std::clamp(x + u, 0, picture.width - 1);
          const int row = std::clamp(y + v, 0, picture.height - 1);
          sum += static_cast<double>(filter[u + kRadius]) * filter[v + kRadius] *
                 picture.values[row * picture.width + column];
        }
      }
      ASSERT_NEAR(result[y * picture.width + x], sum, 1e-5) << x << ", " << y;
    }
  }
}

TEST(Convolve, FindsExtremaAsBruteForceDoesOnEveryTarget) {
  // Few values, so that many neighbors are equal.
  std::mt19937 random(9);
  constexpr int kWidth = 150;
  std::vector<float> rows[9];
  for (auto& row : rows) {
    for (int x = 0; x < kWidth; ++x) {
      row.push_back(static_cast<float>(random() % 9) - 4.0F + (random() % 4 == 0 ? 0.5F : 0.0F));
    }
  }
  for (int x = 10; x < kWidth; x += 7) {
    rows[4][x] = x % 2 == 0 ? 6.0F : -6.0F;
  }
  rows[4][38] = rows[0][87] = kNaN;
  rows[4][66] = kInfinity;
  rows[8][100] = -kInfinity;
  const auto extremal = [&](int x, float threshold) {
    const float value = rows[4][x];
    int below = 0;
    int above = 0;
    for (int n = 0; n < 27; ++n) {
      const float neighbor = rows[n / 3][x + n % 3 - 1];
      below += neighbor < value ? 1 : 0;
      above += neighbor > value ? 1 : 0;
    }
    return (value >= threshold && below == 26) || (value <= -threshold && above == 26);
  };
  VL::Detail::TNeighborhood around;
  for (int n = 0; n < 9; ++n) {
    around.rows[n / 3][n % 3] = rows[n].data();
  }
  OnEachTarget([&] {
    for (const auto& [begin, end, threshold] :
         {std::tuple(1, 149, 1.0F), {1, 149, 0.0F}, {1, 149, -2.0F}, {1, 149, 6.0F}, {8, 27, 1.0F}, {20, 20, 1.0F}}) {
      std::vector<int> expected;
      for (int x = begin; x < end; ++x) {
        if (extremal(x, threshold)) {
          expected.push_back(x);
        }
      }
      EXPECT_EQ(expected.empty(), begin == end);
      std::vector<std::int32_t> columns(kWidth);
      columns.resize(VL::Detail::FindExtrema(columns.data(), around, begin, end, threshold));
      EXPECT_EQ(columns, expected) << begin << " to " << end << " above " << threshold;
    }
  });
}

// Scale space

/// The scale space of the default parameters in plain loops, by the smoothings that follow from them, worked out by
/// hand.
std::vector<float> PlainSmooth(const TPicture& picture, float sigma, int radius) {
  std::vector<float> filter;
  float sum = 0;
  for (int k = -radius; k <= radius; ++k) {
    filter.push_back(std::exp(-0.5F * static_cast<float>(k * k) / (sigma * sigma)));
    sum += filter.back();
  }
  for (float& tap : filter) {
    tap /= sum;
  }
  return PlainConvolve(picture, filter);
}

void CheckPyramid(const TPicture& picture) {
  constexpr std::pair<float, int> kSteps[] = {
      {1.2262735F, 5}, {1.5450078F, 7}, {1.9465880F, 8}, {2.4525471F, 10}, {3.0900161F, 13}};
  const TTestSift sift(picture, {});
  const auto check = [&](const TPicture& expected, int o, int s) {
    const float* level = sift.GetLevel(o, s);
    EXPECT_TRUE(SameBits(expected.values, {level, level + expected.values.size()})) << "octave " << o << " level " << s;
  };
  TPicture next = picture;
  for (int o = 1; o <= 3; ++o) {
    TPicture level(next.width / 2, next.height / 2, [&](double x, double y) {
      return next.values[static_cast<std::size_t>(2 * y * next.width + 2 * x)];
    });
    ASSERT_EQ(sift.GetOctaveWidth(o), level.width);
    ASSERT_EQ(sift.GetOctaveHeight(o), level.height);
    ASSERT_EQ(sift.GetSamplingPeriod(o), static_cast<float>(1 << o));
    if (o == 1) {
      level.values = PlainSmooth(level, 1.5803481F, 7);
    }
    check(level, o, -1);
    for (int s = 0; s <= 4; ++s) {
      level.values = PlainSmooth(level, kSteps[s].first, kSteps[s].second);
      check(level, o, s);
      next = s == 2 ? level : next;
    }
  }
}

TEST(Sift, PyramidEqualsPlainLoopsOnEveryTarget) {
  OnEachTarget([] {
    CheckPyramid(Noise(203, 158, 11));
    // So wide that the levels are made in bands, lower than the filters are wide.
    CheckPyramid(Noise(5003, 151, 12));
  });
}

TEST(Sift, EveryLevelHasItsNominalScale) {
  // The variance of a blob grows by the squares of the smoothings: measured on each level, it tells the scale.
  constexpr double kBlob = 6;
  const TPicture picture(192, 192, [](double x, double y) { return Gaussian(x - 96, y - 96, kBlob); });
  const std::pair<const char*, TParameters> cases[] = {
      {"default", {0.5F, 2.0158737F, 2}},
      {"levels end below the next octave's first", {0.5F, 1.6F, 3, 3, 0, 0, 2}},
      {"the same, far", {0.5F, 1.2F, 3, 4, 0, -1, 0}},
      {"doubled", {0.5F, 1.6F, 3, 3, -1, -1, 4}},
      {"soft input", {1.5F, 1.6F, 2, 2, 0, 0, 3}}};
  for (const auto& [name, p] : cases) {
    const TTestSift sift(picture, p);
    for (int o = p.omin; o < p.omin + p.O; ++o) {
      for (int s = p.smin; s <= p.smax; ++s) {
        const float* value = sift.GetLevel(o, s);
        const double period = sift.GetSamplingPeriod(o);
        double sum = 0;
        double variance = 0;
        for (int y = 0; y < sift.GetOctaveHeight(o); ++y) {
          for (int x = 0; x < sift.GetOctaveWidth(o); ++x, ++value) {
            sum += *value;
            variance += *value * std::pow(x * period - 96, 2);
          }
        }
        const double nominal = p.sigma0 * std::exp2(o + static_cast<double>(s) / p.S);
        const double expected = kBlob * kBlob + nominal * nominal - p.sigman * p.sigman;
        EXPECT_NEAR(std::sqrt(variance / sum), std::sqrt(expected), 0.01 * std::sqrt(expected))
            << name << ", octave " << o << ", level " << s;
      }
    }
  }
}

TEST(Sift, NegativeFirstOctaveDoublesThePicture) {
  TPicture picture(2, 2, [](double, double) { return 0; });
  picture.values = {0, 4, 8, 16};
  // The input counts as softer than the first level, so that the doubled picture stays as it is.
  const TTestSift sift(picture, {4.0F, 1.0F, 1, 3, -1, 0, 1});
  const float* level = sift.GetLevel(-1, 0);
  EXPECT_EQ(std::vector<float>(level, level + 16),
            (std::vector<float>{0, 2, 4, 4, 4, 7, 10, 10, 8, 12, 16, 16, 8, 12, 16, 16}));
  EXPECT_EQ(sift.GetSamplingPeriod(-1), 0.5F);
  const TTestSift twice(picture, {4.0F, 1.0F, 3, 3, -2, 0, 1});
  EXPECT_EQ(twice.GetOctaveWidth(-2), 8);
  level = twice.GetLevel(-2, 0);
  EXPECT_EQ(std::vector<float>(level + 8, level + 16), (std::vector<float>{2, 3.25, 4.5, 5.75, 7, 7, 7, 7}));
}

TEST(Sift, NeitherAnotherPictureNorDetectionLeavesStaleValues) {
  const TParameters p = {0.5F, 1.6F, 4, 3, 0, -1, 4};
  const TPicture second = Noise(94, 30, 2);
  TTestSift sift(Noise(60, 47, 1), p);  // the same area: the buffers fit
  sift.Orientations(sift.Detect().at(0));
  sift.BuildPyramid(second.values.data(), second.width, second.height);
  EXPECT_EQ(sift.KeypointsBegin(), sift.KeypointsEnd());
  TTestSift fresh(second, p);
  const Keypoint keypoint = fresh.MakeKeypoint(45, 5, 1.6F);
  const auto descriptor = fresh.Descriptor(keypoint, 1);
  EXPECT_TRUE(SameBits(sift.Descriptor(keypoint, 1), descriptor));
  const auto a = sift.Detect();
  const auto b = fresh.Detect();
  EXPECT_TRUE(std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Keypoint& one, const Keypoint& other) {
    return std::tie(one.x, one.y, one.s, one.sigma) == std::tie(other.x, other.y, other.s, other.sigma);
  }));
  EXPECT_TRUE(SameBits(sift.Descriptor(keypoint, 1), descriptor));
}

// Keypoints

TEST(Sift, FindsABlobAtItsPositionAndScale) {
  // With blob variance b, input variance n and the factor k between levels, the difference of levels at the blob's
  // center, b / (b - n + k^2 t) - b / (b - n + t), is extremal at the variance t = (b - n) / k.
  for (const auto& [x, y, sigma, contrast] : {std::tuple(60.0, 50.0, 5.0, 0.8), {70.75, 49.5, 7.1, -0.8}}) {
    const TPicture picture(128, 110, [cx = x, cy = y, width = sigma, height = contrast](double px, double py) {
      return 0.5 + height * Gaussian(px - cx, py - cy, width);
    });
    for (const int omin : {-1, 1}) {
      const auto keypoints = TTestSift(picture, {0.5F, 2.0158737F, 4, 3, omin}).Detect(0.05F);
      ASSERT_EQ(keypoints.size(), 1U) << sigma << " from octave " << omin;
      EXPECT_NEAR(keypoints[0].x, x, 0.1);
      EXPECT_NEAR(keypoints[0].y, y, 0.1);
      EXPECT_NEAR(keypoints[0].sigma / std::sqrt((sigma * sigma - 0.25) / std::cbrt(2)), 1, 0.03);
    }
  }
}

/// The solution of the 3 x 3 system m * b = r by Cramer's rule.
std::array<double, 3> Cramer(const double (&m)[3][3], const double (&r)[3]) {
  const auto determinant = [](const double(&a)[3][3]) {
    return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) - a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
           a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
  };
  std::array<double, 3> b;
  for (int column = 0; column < 3; ++column) {
    double a[3][3];
    for (int i = 0; i < 9; ++i) {
      a[i / 3][i % 3] = i % 3 == column ? r[i / 3] : m[i / 3][i % 3];
    }
    b[column] = determinant(a) / determinant(m);
  }
  return b;
}

/// Detection in one octave, straight from the definition, in double precision.
std::vector<Keypoint> PlainDetect(const VL::Sift& sift, const TParameters& p, int o, double threshold, double edge) {
  const int w = sift.GetOctaveWidth(o);
  const int h = sift.GetOctaveHeight(o);
  const auto at = [&](int x, int y, int s) -> double {
    return sift.GetLevel(o, s + 1)[y * w + x] - sift.GetLevel(o, s)[y * w + x];
  };
  const auto isExtremum = [&](int x, int y, int s) {
    const double v = at(x, y, s);
    int beaten = 0;
    for (int n = 0; n < 27 && std::abs(v) >= 0.8 * threshold; ++n) {
      beaten += std::abs(v) > std::copysign(1, v) * at(x + n % 3 - 1, y + n / 3 % 3 - 1, s + n / 9 - 1) ? 1 : 0;
    }
    return beaten == 26;
  };
  std::vector<Keypoint> result;
  const auto refine = [&](int x, int y, int s) {
    std::array<double, 3> b;
    double value = 0;
    double score = 0;
    int dx = 0;
    int dy = 0;
    for (int i = 0; i < 5 && (i == 0 || dx != 0 || dy != 0); ++i) {
      x += dx;
      y += dy;
      const auto f = [&](int a, int c, int e) { return at(x + a, y + c, s + e); };
      const double g[3] = {(f(1, 0, 0) - f(-1, 0, 0)) / 2, (f(0, 1, 0) - f(0, -1, 0)) / 2,
                           (f(0, 0, 1) - f(0, 0, -1)) / 2};
      const double xx = f(1, 0, 0) + f(-1, 0, 0) - 2 * f(0, 0, 0);
      const double yy = f(0, 1, 0) + f(0, -1, 0) - 2 * f(0, 0, 0);
      const double ss = f(0, 0, 1) + f(0, 0, -1) - 2 * f(0, 0, 0);
      const double xy = (f(1, 1, 0) + f(-1, -1, 0) - f(-1, 1, 0) - f(1, -1, 0)) / 4;
      const double xs = (f(1, 0, 1) + f(-1, 0, -1) - f(-1, 0, 1) - f(1, 0, -1)) / 4;
      const double ys = (f(0, 1, 1) + f(0, -1, -1) - f(0, -1, 1) - f(0, 1, -1)) / 4;
      b = Cramer({{xx, xy, xs}, {xy, yy, ys}, {xs, ys, ss}}, {-g[0], -g[1], -g[2]});
      value = f(0, 0, 0) + (g[0] * b[0] + g[1] * b[1] + g[2] * b[2]) / 2;
      score = (xx + yy) * (xx + yy) / (xx * yy - xy * xy);
      dx = b[0] > 0.6 && x < w - 2 ? 1 : b[0] < -0.6 && x > 1 ? -1 : 0;
      dy = b[1] > 0.6 && y < h - 2 ? 1 : b[1] < -0.6 && y > 1 ? -1 : 0;
    }
    if (std::abs(value) > threshold && score >= 0 && score < (edge + 1) * (edge + 1) / edge && std::abs(b[0]) < 1.5 &&
        std::abs(b[1]) < 1.5 && std::abs(b[2]) < 1.5 && x + b[0] >= 0 && x + b[0] <= w - 1 && y + b[1] >= 0 &&
        y + b[1] <= h - 1 && s + b[2] >= p.smin && s + b[2] <= p.smax) {
      const double period = std::exp2(o);
      result.push_back({o, x, y, s, static_cast<float>((x + b[0]) * period), static_cast<float>((y + b[1]) * period),
                        static_cast<float>(s + b[2]), static_cast<float>(p.sigma0 * std::exp2(o + (s + b[2]) / p.S))});
    }
  };
  const std::int64_t samples = std::max(w - 2, 0) * std::int64_t{std::max(h - 2, 0)};
  for (std::int64_t i = 0; i < samples * (p.smax - 2 - p.smin); ++i) {
    const auto x = static_cast<int>(1 + i % (w - 2));
    const auto y = static_cast<int>(1 + i / (w - 2) % (h - 2));
    const auto s = static_cast<int>(p.smin + 1 + i / samples);
    if (isExtremum(x, y, s)) {
      refine(x, y, s);
    }
  }
  return result;
}

TEST(Sift, DetectionFollowsItsDefinition) {
  // The last ones hardly smooth: offsets are large, and many extrema lie at the border.
  for (const TParameters& p : {TParameters(), TParameters{0.5F, 1.6F, 4, 3, 0, -1, 4},
                               TParameters{0.5F, 1.6F, 2, 2, -1, 0, 4}, TParameters{0.3F, 0.7F, 3, 3, 0, -1, 4}}) {
    const TPicture picture = Noise(p.omin < 1 ? 197 : 803, 303, 21);
    TTestSift sift(picture, p);
    for (const auto& [threshold, edge] : {std::pair(TParameters().threshold, 10.0F), {0.0F, 3.0F}, {0.01F, 10.0F}}) {
      std::vector<Keypoint> expected;
      for (int o = p.omin; o < p.omin + p.O; ++o) {
        const auto more = PlainDetect(sift, p, o, threshold, edge);
        expected.insert(expected.end(), more.begin(), more.end());
      }
      const auto keypoints = sift.Detect(threshold, edge);
      ASSERT_EQ(keypoints.size(), expected.size());
      EXPECT_GT(keypoints.size(), 10U);
      for (std::size_t i = 0; i < keypoints.size(); ++i) {
        EXPECT_EQ(std::tie(keypoints[i].o, keypoints[i].ix, keypoints[i].iy, keypoints[i].is),
                  std::tie(expected[i].o, expected[i].ix, expected[i].iy, expected[i].is));
        EXPECT_NEAR(keypoints[i].x, expected[i].x, 0.01);
        EXPECT_NEAR(keypoints[i].y, expected[i].y, 0.01);
        EXPECT_NEAR(keypoints[i].s, expected[i].s, 0.01);
        EXPECT_NEAR(keypoints[i].sigma, expected[i].sigma, 0.003 * expected[i].sigma);
      }
    }
  }
}

TEST(Sift, DegeneratePicturesHaveNoKeypoints) {
  for (const auto& [width, height] : {std::pair(0, 0), {1, 1}, {1, 500}, {500, 1}, {2, 2}, {7, 7}, {-3, 5}, {64, 48}}) {
    for (const float value : {0.0F, 0.7F, kNaN, kInfinity, -kInfinity}) {
      for (const int omin : {-1, 0, 1, 4}) {
        const TPicture picture(width, height, [&](double, double) { return value; });
        EXPECT_TRUE(TTestSift(picture, {0.5F, 2.0F, 5, 3, omin, -1, 4}).Detect(0.0F).empty()) << width << " " << value;
      }
    }
  }
  EXPECT_TRUE(TTestSift(Noise(1, 500, 2), {0.5F, 2.0F, 3, 3, 0, -1, 4}).Detect(0.0F).empty());
  VL::Sift none(nullptr, 100, 100, 0.5F, 2.0F, 3, 3, 1, -1, 4);
  none.DetectKeypoints(0, 10);
  EXPECT_EQ(none.KeypointsBegin(), none.KeypointsEnd());
}

TEST(Sift, BrokenValuesSpoilOnlyWhatTheyTouch) {
  const TParameters p = {0.5F, 2.0158737F, 1, 3, 0, -1, 4};
  TPicture picture = Noise(300, 120, 8);
  // The radii of all filters sum up to below 60.
  const auto countFar = [](const std::vector<Keypoint>& all) {
    return std::count_if(all.begin(), all.end(), [](const Keypoint& keypoint) { return keypoint.x < 210; });
  };
  const auto whole = countFar(TTestSift(picture, p).Detect(0.003F));
  EXPECT_GT(whole, 5);
  for (const float value : {kNaN, kInfinity, -kInfinity}) {
    picture.values[60 * 300 + 280] = value;
    TTestSift sift(picture, p);
    const auto keypoints = sift.Detect(0.003F);
    EXPECT_EQ(countFar(keypoints), whole);
    for (const Keypoint& keypoint : keypoints) {
      EXPECT_TRUE(std::isfinite(keypoint.x + keypoint.y + keypoint.s + keypoint.sigma));
      for (const float angle : sift.Orientations(keypoint)) {
        const auto descriptor = sift.Descriptor(keypoint, angle);
        EXPECT_TRUE(std::all_of(descriptor.begin(), descriptor.end(), [](float e) { return e >= 0 && e <= 1; }));
      }
    }
  }
}

TEST(Sift, ParametersWithoutSenseGiveNoOctaves) {
  constexpr int kMost = std::numeric_limits<int>::max();
  std::vector<TParameters> cases;
  for (const auto& [sigman, sigma0] : {std::pair(0.0F, 2.0F),
                                       {-1.0F, 2.0F},
                                       {kNaN, 2.0F},
                                       {kInfinity, 2.0F},
                                       {0.5F, 0.0F},
                                       {0.5F, kNaN},
                                       {0.5F, 1e30F}}) {
    cases.push_back({sigman, sigma0});
  }
  constexpr int kNumbers[][5] = {{0, 3, 1, -1, 4},  {-1, 3, 1, -1, 4},         {kMost, 3, 1, -1, 4},
                                 {3, 0, 1, -1, 4},  {3, -kMost, 1, -1, 4},     {3, 3, -9, -1, 4},
                                 {3, 3, 17, -1, 4}, {3, 3, -kMost - 1, -1, 4}, {kMost, 3, kMost, -1, 4},
                                 {3, 3, 1, 5, 4},   {3, 3, 1, -kMost, kMost},  {3, 3, 1, -kMost - 1, -kMost - 1},
                                 {3, 1, 1, 0, 60}};
  for (const auto& [O, S, omin, smin, smax] : kNumbers) {
    cases.push_back({0.5F, 2, O, S, omin, smin, smax});
  }
  const TPicture picture = Noise(64, 64, 1);
  for (const TParameters& p : cases) {
    TTestSift sift(picture, p);
    EXPECT_TRUE(sift.Detect(0).empty());
    EXPECT_EQ(sift.Descriptor(sift.MakeKeypoint(32, 32, 3), 0, 7)[0], 7);
    sift.BuildPyramid(picture.values.data(), picture.width, picture.height);
    EXPECT_TRUE(sift.Detect(0).empty());
  }
  // 2^31 floats and a little more: the picture is not read.
  const float pixel = 0;
  VL::Sift large(&pixel, 10924, 10924, 0.5F, 1.6F, 3, 3, 0, -1, 4);
  large.DetectKeypoints(0, 10);
  EXPECT_EQ(large.KeypointsBegin(), large.KeypointsEnd());
  VL::Sift doubled(&pixel, kMost, kMost, 0.5F, 1.6F, 3, 3, -8, -1, 4);
  EXPECT_EQ(doubled.KeypointsBegin(), doubled.KeypointsEnd());
}

TEST(Sift, AfterAPictureThatWasTooLargeASmallOneWorks) {
  const TPicture picture = Noise(64, 64, 1);
  TTestSift expected(picture, {});
  const std::vector<Keypoint> keypoints = expected.Detect();
  ASSERT_FALSE(keypoints.empty());
  constexpr int kMost = std::numeric_limits<int>::max();
  TTestSift sift(picture, {});
  for (int round = 0; round < 2; ++round) {
    sift.BuildPyramid(picture.values.data(), kMost, kMost);
    EXPECT_TRUE(sift.Detect().empty());
    EXPECT_EQ(sift.Descriptor(keypoints[0], 0, 7)[0], 7);
    sift.BuildPyramid(picture.values.data(), picture.width, picture.height);
    const std::vector<Keypoint> found = sift.Detect();
    ASSERT_EQ(found.size(), keypoints.size());
    EXPECT_EQ(std::tie(found[0].x, found[0].y, found[0].sigma),
              std::tie(keypoints[0].x, keypoints[0].y, keypoints[0].sigma));
    EXPECT_EQ(sift.Descriptor(found[0], 1), expected.Descriptor(keypoints[0], 1));
  }
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
/// What a process of its own finds that may not have the memory for a picture: whether it has no octaves then, and some
/// again with a small picture.
void BuildWithoutMemory() {
  rlimit limit = {};
  getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = rlim_t{2} << 30;
  setrlimit(RLIMIT_AS, &limit);
  const TPicture picture = Noise(64, 64, 1);
  // 4 GiB of differences; the picture is not read.
  TTestSift sift(picture, {});
  sift.BuildPyramid(picture.values.data(), 15000, 15000);
  const bool isEmpty = sift.Detect().empty();
  sift.BuildPyramid(picture.values.data(), picture.width, picture.height);
  std::_Exit(isEmpty && !sift.Detect().empty() ? 0 : 1);
}

TEST(Sift, AfterMemoryRanOutASmallPictureWorks) {
  EXPECT_EXIT(BuildWithoutMemory(), testing::ExitedWithCode(0), "");
}
#endif

TEST(Sift, IndicesOutsideTheScaleSpaceStopTheProgram) {
  const TTestSift sift(Noise(32, 32, 1), {});
  EXPECT_DEATH(static_cast<void>(sift.GetOctaveWidth(0)), "omin <= o && o < omin \\+ O");
  EXPECT_DEATH(static_cast<void>(sift.GetSamplingPeriod(4)), "omin <= o && o < omin \\+ O");
  EXPECT_DEATH(static_cast<void>(sift.GetLevel(1, 5)), "smin <= s && s <= smax");
  EXPECT_DEATH(VL::Detail::expn(kNaN), "x <= Detail::expnTableMax");
}

// Orientation and descriptor

TEST(Sift, AFlatPictureHasNoOrientationAndASlopeItsDirection) {
  TTestSift flat(TPicture(128, 128, [](double, double) { return 0.5; }), {});
  const Keypoint keypoint = flat.MakeKeypoint(64, 64, 4);
  EXPECT_TRUE(flat.Orientations(keypoint).empty());
  EXPECT_EQ(flat.Descriptor(keypoint, 0), std::vector<float>(128));
  // A bin's center is 10 i + 5 degrees; directions on either side of 0 fall into the bins 0 and 35.
  for (const auto& [direction, expected] : {std::pair(95.0, 95.0), {215.0, 215.0}, {0.0, 5.0}, {-3.0, 355.0}}) {
    const double c = std::cos(direction * kPi / 180);
    const double s = std::sin(direction * kPi / 180);
    TTestSift sift(TPicture(128, 128, [&](double x, double y) { return 0.01 * (c * x + s * y); }), {});
    const auto angles = sift.Orientations(keypoint);
    ASSERT_EQ(angles.size(), 1U) << direction;
    EXPECT_NEAR(angles[0], expected * kPi / 180, 1e-3) << direction;
  }
}

TEST(Sift, OfFiveOrientationsTheFirstFourCount) {
  // A cup with five sides has five equal peaks, 72 degrees apart.
  const auto cup = [](double x, double y) {
    double height = 0;
    for (int i = 0; i < 5; ++i) {
      height = std::max(
          height, std::cos((5 + 72 * i) * kPi / 180) * (x - 128) + std::sin((5 + 72 * i) * kPi / 180) * (y - 128));
    }
    return 0.01 * height;
  };
  TTestSift five(TPicture(257, 257, cup), {0.5F, 1.6F, 4, 3, 0, -1, 4});
  const auto angles = five.Orientations(five.MakeKeypoint(128, 128, 10));
  ASSERT_EQ(angles.size(), 4U);
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(angles[i] * 180 / kPi, 5 + 72 * i, 4);
  }
}

/// The orientations straight from their definition, in double precision.
std::vector<double> PlainOrientations(const VL::Sift& sift, const Keypoint& keypoint) {
  const int w = sift.GetOctaveWidth(keypoint.o);
  const int h = sift.GetOctaveHeight(keypoint.o);
  const float* level = sift.GetLevel(keypoint.o, keypoint.is);
  const double kx = keypoint.x / sift.GetSamplingPeriod(keypoint.o);
  const double ky = keypoint.y / sift.GetSamplingPeriod(keypoint.o);
  const double sigma = 1.5 * keypoint.sigma / sift.GetSamplingPeriod(keypoint.o);
  const int reach = static_cast<int>(3 * sigma);
  std::vector<double> bins(36);
  for (int y = 1; y <= h - 2; ++y) {
    for (int x = 1; x <= w - 2; ++x) {
      const double r2 = (x - kx) * (x - kx) + (y - ky) * (y - ky);
      const bool inside = std::abs(x - std::floor(kx + 0.5)) <= reach && std::abs(y - std::floor(ky + 0.5)) <= reach &&
                          r2 < reach * reach + 0.5;
      const double gx = (level[y * w + x + 1] - level[y * w + x - 1]) / 2;
      const double gy = (level[(y + 1) * w + x] - level[(y - 1) * w + x]) / 2;
      const double turns = std::atan2(gy, gx) / (2 * kPi) + 1;
      bins[static_cast<int>(36 * turns) % 36] += inside ? std::exp(-r2 / (2 * sigma * sigma)) * std::hypot(gx, gy) : 0;
    }
  }
  for (int pass = 0; pass < 6; ++pass) {
    const std::vector<double> before = bins;
    for (int i = 0; i < 36; ++i) {
      bins[i] = (before[(i + 35) % 36] + before[i] + before[(i + 1) % 36]) / 3;
    }
  }
  std::vector<double> angles;
  for (int i = 0; i < 36 && angles.size() < 4; ++i) {
    const double hm = bins[(i + 35) % 36];
    const double hp = bins[(i + 1) % 36];
    if (bins[i] > 0.8 * *std::max_element(bins.begin(), bins.end()) && bins[i] > hm && bins[i] > hp) {
      angles.push_back(2 * kPi / 36 * (i + 0.5 - (hp - hm) / 2 / (hp + hm - 2 * bins[i])));
    }
  }
  return angles;
}

TEST(Sift, OrientationsFollowTheirDefinition) {
  TTestSift sift(TPicture(256, 256, Scene), {});
  auto keypoints = sift.Detect();
  keypoints.push_back(sift.MakeKeypoint(3, 250.3F, 5));
  std::size_t several = 0;
  for (const Keypoint& keypoint : keypoints) {
    const auto expected = PlainOrientations(sift, keypoint);
    const auto angles = sift.Orientations(keypoint);
    ASSERT_EQ(angles.size(), expected.size()) << keypoint.x << " " << keypoint.y;
    several += angles.size() > 1 ? 1 : 0;
    for (std::size_t i = 0; i < angles.size(); ++i) {
      EXPECT_NEAR(angles[i], expected[i], 1e-3);
    }
  }
  EXPECT_GT(several, 3U);
}

/// The descriptor straight from its definition, in double precision.
std::vector<float> PlainDescriptor(const VL::Sift& sift, const Keypoint& keypoint, double angle, bool normalize) {
  const int w = sift.GetOctaveWidth(keypoint.o);
  const int h = sift.GetOctaveHeight(keypoint.o);
  const float* level = sift.GetLevel(keypoint.o, keypoint.is);
  const double period = sift.GetSamplingPeriod(keypoint.o);
  const double bin = 3 * keypoint.sigma / period;
  const int reach = static_cast<int>(std::floor(bin * std::sqrt(2) * 2.5 + 0.5));
  const int xi = static_cast<int>(std::floor(keypoint.x / period + 0.5));
  const int yi = static_cast<int>(std::floor(keypoint.y / period + 0.5));
  std::vector<double> sums(128);
  for (int y = std::max(1, yi - reach); y <= std::min(h - 2, yi + reach); ++y) {
    for (int x = std::max(1, xi - reach); x <= std::min(w - 2, xi + reach); ++x) {
      const double gx = (level[y * w + x + 1] - level[y * w + x - 1]) / 2;
      const double gy = (level[(y + 1) * w + x] - level[(y - 1) * w + x]) / 2;
      const double theta = angle - std::atan2(gy, gx);
      const double dx = x - keypoint.x / period;
      const double dy = y - keypoint.y / period;
      const double nx = (std::cos(angle) * dx + std::sin(angle) * dy) / bin;
      const double ny = (std::cos(angle) * dy - std::sin(angle) * dx) / bin;
      const double weight = std::hypot(gx, gy) * std::exp(-(nx * nx + ny * ny) / 8);
      // Every bin takes what its distance leaves of the sample.
      for (int i = 0; i < 128; ++i) {
        const double bx = std::abs(nx - (static_cast<double>(i / 8 % 4) - 1.5));
        const double by = std::abs(ny - (static_cast<double>(i >> 5) - 1.5));
        const double bt = std::abs(std::remainder(theta * 4 / kPi - i % 8, 8));
        sums[i] += weight * std::max(0.0, 1 - bx) * std::max(0.0, 1 - by) * std::max(0.0, 1 - bt);
      }
    }
  }
  for (int pass = 0; pass < 2 && normalize; ++pass) {
    double norm = 0;
    for (const double value : sums) {
      norm += value * value;
    }
    for (double& value : sums) {
      value = pass == 0 ? std::min(0.2, value / std::sqrt(norm)) : value / std::sqrt(norm);
    }
  }
  return {sums.begin(), sums.end()};
}

TEST(Sift, DescriptorFollowsItsDefinition) {
  TTestSift sift(TPicture(256, 256, Scene), {});
  auto keypoints = sift.Detect();
  ASSERT_GT(keypoints.size(), 20U);
  keypoints.push_back(sift.MakeKeypoint(3, 250.3F, 5));  // most of its window lies outside
  for (std::size_t i = 0; i < keypoints.size(); i += 3) {
    for (const float angle : {0.0F, 2.5F, -1.0F, 100.0F}) {
      for (const bool normalize : {true, false}) {
        sift.normalizeDescriptors = normalize;
        const auto expected = PlainDescriptor(sift, keypoints[i], angle, normalize);
        EXPECT_LT(Distance(sift.Descriptor(keypoints[i], angle), expected),
                  1e-3 * Distance(expected, std::vector<float>(128)));
      }
    }
  }
}

TEST(Sift, MakeKeypointFindsOctaveAndLevel) {
  const TTestSift sift(Noise(128, 128, 1), {});
  for (int o = 1; o <= 3; ++o) {
    for (int s = 0; s <= 2; ++s) {
      const float sigma = 2.0158737F * std::exp2(static_cast<float>(o) + (static_cast<float>(s) - 0.3F) / 3);
      const Keypoint keypoint = sift.MakeKeypoint(50.9F, 21, sigma);
      EXPECT_EQ(std::pair(keypoint.o, keypoint.is), std::pair(o, s));
      EXPECT_NEAR(keypoint.s, s - 0.3, 1e-4);
      EXPECT_EQ(keypoint.ix, std::floor(50.9 / (1 << o) + 0.5));
      EXPECT_EQ(keypoint.iy, std::floor(21.0 / (1 << o) + 0.5));
      EXPECT_EQ(std::tuple(keypoint.x, keypoint.y, keypoint.sigma), std::tuple(50.9F, 21.0F, sigma));
    }
  }
  const Keypoint least = sift.MakeKeypoint(0, 0, 1e-3F);
  const Keypoint most = sift.MakeKeypoint(0, 0, 1e5F);
  EXPECT_EQ(std::tuple(least.o, least.is, most.o, most.is), std::tuple(1, 0, 3, 2));
}

TEST(Sift, KeypointsWithoutAPlaceAreRefused) {
  TTestSift sift(Noise(128, 128, 1), {});
  const Keypoint good = sift.MakeKeypoint(64, 64, 4);
  std::vector<Keypoint> cases;
  for (const float sigma : {0.1F, 1e-30F, 0.0F, -1.0F, 1e12F, kInfinity, kNaN}) {
    cases.push_back(sift.MakeKeypoint(64, 64, sigma));
  }
  constexpr float kPlaces[][4] = {{-3, 64, 1, 0},  {127.1F, 64, 1, 0}, {64, 1e30F, 1, 0}, {64, kNaN, 1, 0},
                                  {64, 64, 1, -1}, {64, 64, 1, 3},     {64, 64, 0, 0},    {64, 64, 4, 0}};
  for (const auto& [x, y, o, is] : kPlaces) {
    cases.push_back({static_cast<int>(o), good.ix, good.iy, static_cast<int>(is), x, y, good.s, good.sigma});
  }
  std::ostringstream errors;
  std::streambuf* const before = std::cerr.rdbuf(errors.rdbuf());
  std::string lines;
  for (const Keypoint& keypoint : cases) {
    EXPECT_TRUE(sift.Orientations(keypoint).empty());
    lines += "!\n";
    EXPECT_EQ(sift.Descriptor(keypoint, 0, 7), std::vector<float>(128, 7));
    EXPECT_EQ(errors.str(), lines);
  }
  EXPECT_EQ(sift.Descriptor(good, kInfinity, 7)[0], 7);
  // A window of one sample, up to half a pixel away on either axis, holds from 1.5 * sigma / 2 = 0.1 on: then
  // 0.5 / (2 * 0.1^2) is 25.
  float sigma = 0.05F;
  while (sigma < 1000) {
    const Keypoint keypoint = sift.MakeKeypoint(64.9F, 63.1F, sigma);
    EXPECT_EQ(sift.Orientations(keypoint).empty(), sigma < 0.2F / 1.5F) << sigma;
    EXPECT_EQ(sift.Descriptor(keypoint, 1, 7)[0] == 7, sigma < 0.2F / 1.5F) << sigma;
    sigma *= 1.05F;
  }
  // Left of the first column by less than a rounding, and so in the octave: its window is farther away than others.
  // With a radius of 1, a distance of 1.45 and bins of 3 * sigma / 2, 2 * (2.45 / bin)^2 / 8 is 25 at sigma 2.45 / 15.
  sigma = 0.13F;
  while (sigma < 1) {
    Keypoint keypoint = sift.MakeKeypoint(-2.9F, -2.9F, sigma);
    EXPECT_EQ(sift.Descriptor(keypoint, 1, 7)[0] == 7, sigma < 2.45F / 15) << sigma;
    sigma *= 1.05F;
  }
  std::cerr.rdbuf(before);
}

TEST(Sift, AWindowAtTheLimitOfTheWeightsStaysInsideWhenItIsTurned) {
  TTestSift sift(Noise(128, 128, 1), {});
  // Narrow bins, so that the window's corner comes to the largest argument of expn before its center does.
  sift.magnification = 0.2F;
  std::mt19937 random(3);
  int computed = 0;
  for (int place = 0; place < 200; ++place) {
    const float away = static_cast<float>(random() % 1000) / 2000;
    // The corner lies `away` samples of period 2 from the keypoint on both axes, and 2 * (away / bin)^2 / 8 is 25 here.
    float sigma = away / 10 / sift.magnification * 2;
    for (int i = 0; i < 12; ++i) {
      sigma = std::nextafter(sigma, 0.0F);
    }
    for (int i = 0; i < 24; ++i, sigma = std::nextafter(sigma, 1e9F)) {
      const Keypoint keypoint = sift.MakeKeypoint(64 + 2 * away, 64 + 2 * away, sigma);
      for (int turn = 0; turn < 16; ++turn) {
        const float angle = static_cast<float>(random() % 6283) / 1000;
        computed += sift.Descriptor(keypoint, angle, 7)[0] != 7 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(computed, 10000);
}

// Invariance

struct TDescribed {
  Keypoint keypoint;
  float angle;
  std::vector<float> descriptor;
};

std::vector<TDescribed> Describe(TTestSift& sift, float threshold) {
  std::vector<TDescribed> result;
  for (const Keypoint& keypoint : sift.Detect(threshold)) {
    for (const float angle : sift.Orientations(keypoint)) {
      EXPECT_TRUE(angle >= 0 && angle < 2 * kPi);
      result.push_back({keypoint, angle, sift.Descriptor(keypoint, angle)});
      double length = 0;
      for (const float value : result.back().descriptor) {
        length += value * value;
      }
      EXPECT_NEAR(length, 1, 1e-4);
    }
  }
  return result;
}

TEST(Sift, QuarterTurnTurnsKeypointsAndKeepsDescriptors) {
  const TParameters p = {0.5F, 1.6F, 1, 3, 0, -1, 4};
  TTestSift upright(TPicture(160, 120, Scene), p);
  // Column x, row y of the picture comes to column 119 - y, row x.
  TTestSift turned(TPicture(120, 160, [](double x, double y) { return Scene(y, 119 - x); }), p);
  const auto a = Describe(upright, 0.004F);
  const auto b = Describe(turned, 0.004F);
  ASSERT_GT(a.size(), 20U);
  ASSERT_EQ(a.size(), b.size());
  for (const TDescribed& one : a) {
    const auto isPartner = [&](const TDescribed& other) {
      const double turn = std::remainder(other.angle - one.angle - kPi / 2, 2 * kPi);
      return std::hypot(other.keypoint.x - (119 - one.keypoint.y), other.keypoint.y - one.keypoint.x) < 0.02 &&
             std::abs(turn) < 0.01;
    };
    const auto partner = std::find_if(b.begin(), b.end(), isPartner);
    ASSERT_NE(partner, b.end()) << one.keypoint.x << " " << one.keypoint.y;
    EXPECT_NEAR(partner->keypoint.sigma, one.keypoint.sigma, 0.01);
    EXPECT_LT(Distance(partner->descriptor, one.descriptor), 0.02);
  }
}

TEST(Sift, DescriptorsMatchAcrossSimilaritiesAndLight) {
  struct TCase {
    const char* name;
    double turn, scale, dx, dy, gain, light;
  };
  constexpr TCase kCases[] = {{"shift", 0, 1, 7.25, -4.5, 1, 0},
                              {"turn", 35, 1, 100, -50, 1, 0},
                              {"half turn", 180, 1, 250, 250, 1, 0},
                              {"twice as large", 0, 2, 0, 0, 1, 0},
                              {"light and contrast", 0, 1, 0, 0, 0.4, 0.3},
                              {"all", -20, 1.5, -60, 80, 0.7, -0.1}};
  const TParameters p = {0.5F, 1.6F, 4, 3, 0, -1, 4};
  TTestSift original(TPicture(256, 256, Scene), p);
  const auto a = Describe(original, 0.01F);
  for (const TCase& c : kCases) {
    // A point goes to scale * turned + (dx, dy).
    const double co = std::cos(c.turn * kPi / 180) * c.scale;
    const double si = std::sin(c.turn * kPi / 180) * c.scale;
    const auto size = static_cast<int>(256 * c.scale);
    TTestSift changed(TPicture(size, size,
                               [&](double x, double y) {
                                 const double u = (co * (x - c.dx) + si * (y - c.dy)) / (c.scale * c.scale);
                                 const double v = (co * (y - c.dy) - si * (x - c.dx)) / (c.scale * c.scale);
                                 return c.gain * Scene(u, v) + c.light;
                               }),
                      p);
    const auto b = Describe(changed, static_cast<float>(0.01 * c.gain));
    int visible = 0;
    int correct = 0;
    for (const TDescribed& one : a) {
      const double x = co * one.keypoint.x - si * one.keypoint.y + c.dx;
      const double y = si * one.keypoint.x + co * one.keypoint.y + c.dy;
      const double margin = 8 * one.keypoint.sigma * c.scale;
      if (std::min(x, y) < margin || std::max(x, y) > size - margin || one.keypoint.sigma < 2 ||
          std::min(one.keypoint.x, one.keypoint.y) < margin ||
          std::max(one.keypoint.x, one.keypoint.y) > 256 - margin) {
        continue;
      }
      ++visible;
      const auto nearest = std::min_element(b.begin(), b.end(), [&](const TDescribed& m, const TDescribed& n) {
        return Distance(m.descriptor, one.descriptor) < Distance(n.descriptor, one.descriptor);
      });
      const double distance = std::hypot(nearest->keypoint.x - x, nearest->keypoint.y - y);
      correct += distance < c.scale && std::abs(nearest->keypoint.sigma / (one.keypoint.sigma * c.scale) - 1) < 0.1 &&
                         std::abs(std::remainder(nearest->angle - one.angle - c.turn * kPi / 180, 2 * kPi)) < 0.1
                     ? 1
                     : 0;
    }
    EXPECT_GT(visible, 40) << c.name;
    EXPECT_GE(correct, 0.8 * visible) << c.name << ": " << correct << " of " << visible;
  }
}

}  // namespace
