// The scale space and the detection of keypoints, with the parameters of the method "sift", beside the same blurs and
// the detection of OpenCV. Every run starts without memory of its own, as it does for each picture of a database.

#include <cmath>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "Sift/sift-parameters.h"
#include "Sift/sift.h"
#include "benchmarks/bench-data.h"
#include "benchmarks/simd-level.h"
#include "images/image-gray.h"
#include "segmentation/interest-points-sift.h"

namespace {

constexpr VL::TSiftParameters kParameters;

const TImageRGB& Picture(const benchmark::State& state) {
  return Mosaic(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
}

cv::Mat Gray(const benchmark::State& state) {
  TImageGray gray;
  Picture(state).ToGray(gray);
  return cv::Mat(gray.GetHeight(), gray.GetWidth(), CV_8UC1, const_cast<unsigned char*>(gray.GetPixels()),
                 static_cast<std::size_t>(gray.GetStride()))
      .clone();
}

cv::Mat Fractions(const benchmark::State& state) {
  cv::Mat fractions;
  Gray(state).convertTo(fractions, CV_32F, 1.0 / 255.0);
  return fractions;
}

std::unique_ptr<VL::Sift> BuildPyramid(const cv::Mat& picture) {
  return std::make_unique<VL::Sift>(picture.ptr<float>(), picture.cols, picture.rows, kParameters.sigman,
                                    kParameters.sigma0, kParameters.O, kParameters.S, kParameters.omin,
                                    kParameters.smin, kParameters.smax);
}

/// The time for each pixel of the picture, so that sizes can be compared.
void CountPixels(benchmark::State& state) {
  const auto pixels = static_cast<double>(state.range(0) * state.range(1));
  state.counters["perPixel"] =
      benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_SiftPyramid(benchmark::State& state) {
  const cv::Mat picture = Fractions(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(BuildPyramid(picture)->GetLevel(kParameters.omin, kParameters.smax));
  }
  CountPixels(state);
}

cv::Mat Blur(const cv::Mat& source, double sigma) {
  const int size = 2 * static_cast<int>(std::ceil(4 * sigma)) + 1;
  cv::Mat blurred;
  cv::GaussianBlur(source, blurred, {size, size}, sigma, sigma, cv::BORDER_REPLICATE);
  return blurred;
}

cv::Mat Half(const cv::Mat& source) {
  cv::Mat half;
  cv::resize(source, half, {source.cols / 2, source.rows / 2}, 0, 0, cv::INTER_NEAREST);
  return half;
}

std::vector<cv::Mat> BuildPyramidOpenCv(const cv::Mat& picture) {
  const double step = std::exp2(1.0 / kParameters.S);
  const double base = kParameters.sigma0 * std::pow(step, kParameters.smin);
  const double smoothing = kParameters.sigman / 2;
  std::vector<cv::Mat> levels = {Blur(Half(picture), std::sqrt(base * base - smoothing * smoothing))};
  for (int octave = 0; octave < kParameters.O; ++octave) {
    if (octave > 0) {
      // The level of twice the scale of the octave's first.
      levels.push_back(Half(
          levels[levels.size() - 1 - static_cast<std::size_t>(kParameters.smax - kParameters.smin - kParameters.S)]));
    }
    for (int level = kParameters.smin + 1; level <= kParameters.smax; ++level) {
      const double from = kParameters.sigma0 * std::pow(step, level - 1);
      levels.push_back(Blur(levels.back(), from * std::sqrt(step * step - 1)));
    }
  }
  return levels;
}

void BM_SiftPyramidOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const cv::Mat picture = Fractions(state);
  // Both make the same pictures.
  const cv::Mat last = BuildPyramidOpenCv(picture).back();
  const auto pyramid = BuildPyramid(picture);
  const int octave = kParameters.omin + kParameters.O - 1;
  const cv::Mat ours(pyramid->GetOctaveHeight(octave), pyramid->GetOctaveWidth(octave), CV_32F,
                     const_cast<float*>(pyramid->GetLevel(octave, kParameters.smax)));
  if (ours.size() != last.size() || cv::norm(ours, last, cv::NORM_INF) > 1e-4) {
    state.SkipWithError("The two pyramids differ.");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(BuildPyramidOpenCv(picture).data());
  }
  CountPixels(state);
}

void BM_SiftDetect(benchmark::State& state) {
  const cv::Mat picture = Fractions(state);
  std::ptrdiff_t count = 0;
  for (auto _ : state) {
    const auto sift = BuildPyramid(picture);
    sift->DetectKeypoints(kParameters.threshold, kParameters.edgeThreshold);
    count = sift->KeypointsEnd() - sift->KeypointsBegin();
  }
  CountPixels(state);
  state.counters["keypoints"] = static_cast<double>(count);
}

/// The same from the picture in colors, as segmentimage does it.
void BM_SiftDetectFromColors(benchmark::State& state) {
  const TImageRGB& picture = Picture(state);
  std::vector<TInterestPoint> points;
  for (auto _ : state) {
    TInterestPointsSift().Detect(picture, points);
  }
  CountPixels(state);
  state.counters["keypoints"] = static_cast<double>(points.size());
}

/// OpenCV doubles its picture: a quarter of the width and height makes the same first octave. It tests the contrast
/// times the number of levels.
void DetectOpenCv(benchmark::State& state, double contrast) {
  cv::setNumThreads(1);
  const cv::Mat gray = Gray(state);
  cv::Mat quarter;
  cv::resize(gray, quarter, {gray.cols / 4, gray.rows / 4}, 0, 0, cv::INTER_AREA);
  const auto sift = cv::SIFT::create(0, kParameters.S, contrast, kParameters.edgeThreshold);
  std::vector<cv::KeyPoint> keypoints;
  for (auto _ : state) {
    sift->detect(quarter, keypoints);
  }
  CountPixels(state);
  state.counters["keypoints"] = static_cast<double>(keypoints.size());
}

void BM_SiftDetectOpenCv(benchmark::State& state) {
  DetectOpenCv(state, kParameters.S * kParameters.threshold);
}

/// Without candidates: what is left are the scale space and its scan. Its detection works out the orientations of what
/// it finds as well, which ours does not.
void BM_SiftDetectOpenCvFindsNothing(benchmark::State& state) {
  DetectOpenCv(state, 10.0);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Args({640, 480})->Args({1920, 1080})->Args({4000, 3000})->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_SiftPyramid)->Apply(Sizes);
BENCHMARK(BM_SiftPyramidOpenCv)->Apply(Sizes);
BENCHMARK(BM_SiftDetect)->Apply(Sizes);
BENCHMARK(AtLevel<BM_SiftDetect, HWY_AVX2>)->Name("BM_SiftDetect/AVX2")->Apply(Sizes);
BENCHMARK(AtLevel<BM_SiftDetect, kPlain>)->Name("BM_SiftDetect/SSE2")->Apply(Sizes);
BENCHMARK(BM_SiftDetectFromColors)->Apply(Sizes);
BENCHMARK(BM_SiftDetectOpenCv)->Apply(Sizes);
BENCHMARK(BM_SiftDetectOpenCvFindsNothing)->Apply(Sizes);

}  // namespace
