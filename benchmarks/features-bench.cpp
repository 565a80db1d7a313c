// The gray plane and the built-in features on 640 x 480, at several SIMD levels, beside their plain loops and what
// OpenCV makes of the same task.

#include <array>
#include <cstdint>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include "benchmarks/bench-data.h"
#include "benchmarks/simd-level.h"
#include "images/image-gray.h"
#include "kernels/gray-plane.h"
#include "kernels/hsv-histogram.h"
#include "kernels/lbp-histogram.h"
#include "kernels/reference.h"

namespace {

/// The picture as OpenCV sees it; it does not write to a picture that it only reads.
template <typename TImage>
cv::Mat Wrap(const TImage& image, int type) {
  return {image.GetHeight(), image.GetWidth(), type, const_cast<unsigned char*>(image.GetPixels()),
          static_cast<std::size_t>(image.GetStride())};
}

template <auto TKernel>
void BM_Gray(benchmark::State& state) {
  TImageGray gray;
  gray.SetSize(640, 480);
  for (auto _ : state) {
    TKernel(SmallColor().GetPixels(), SmallColor().GetStride(), gray.GetPixels(), gray.GetStride(), 640, 480);
    benchmark::ClobberMemory();
  }
}

void BM_GrayOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const cv::Mat color = Wrap(SmallColor(), CV_8UC3);
  cv::Mat gray;
  for (auto _ : state) {
    cv::cvtColor(color, gray, cv::COLOR_RGB2GRAY);
    benchmark::ClobberMemory();
  }
}

template <auto TKernel, auto TImage>
void BM_Histogram(benchmark::State& state) {
  const auto& image = TImage();
  std::array<std::uint64_t, 256> counts;
  for (auto _ : state) {
    TKernel(image.GetPixels(), image.GetStride(), image.GetWidth(), image.GetHeight(), counts.data());
    benchmark::DoNotOptimize(counts);
  }
}

void BM_HsvOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const cv::Mat color = Wrap(SmallColor(), CV_8UC3);
  cv::Mat hsv;
  std::array<std::uint32_t, 256> counts;
  for (auto _ : state) {
    counts.fill(0);
    cv::cvtColor(color, hsv, cv::COLOR_RGB2HSV_FULL);
    for (int y = 0; y < hsv.rows; ++y) {
      const unsigned char* pixel = hsv.ptr(y);
      for (int x = 0; x < hsv.cols; ++x, pixel += 3) {
        ++counts[static_cast<std::size_t>((pixel[0] & 0xf0) + (pixel[1] / 64) * 4 + pixel[2] / 64)];
      }
    }
    benchmark::DoNotOptimize(counts);
  }
}

void BM_LbpOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const cv::Mat gray = Wrap(SmallGray(), CV_8UC1);
  const cv::Mat center = gray(cv::Rect(1, 1, gray.cols - 2, gray.rows - 2));
  const std::array<cv::Point, 8> neighbors = {{{0, 0}, {1, 0}, {2, 0}, {0, 1}, {2, 1}, {0, 2}, {1, 2}, {2, 2}}};
  cv::Mat brighter;
  cv::Mat pattern;
  std::array<std::uint32_t, 256> counts;
  for (auto _ : state) {
    pattern = cv::Mat::zeros(center.size(), CV_8UC1);
    for (std::size_t bit = 0; bit < neighbors.size(); ++bit) {
      cv::compare(gray(cv::Rect(neighbors[bit], center.size())), center, brighter, cv::CMP_GT);
      cv::bitwise_and(brighter, cv::Scalar(1 << bit), brighter);
      cv::bitwise_or(pattern, brighter, pattern);
    }
    counts.fill(0);
    for (int y = 0; y < pattern.rows; ++y) {
      for (int x = 0; x < pattern.cols; ++x) {
        ++counts[pattern.at<unsigned char>(y, x)];
      }
    }
    benchmark::DoNotOptimize(counts);
  }
}

BENCHMARK(BM_Gray<kernels::GrayPlane>)->Name("BM_Gray")->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Gray<kernels::GrayPlane>, HWY_AVX2>)->Name("BM_Gray/AVX2")->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Gray<kernels::GrayPlane>, kPlain>)->Name("BM_Gray/SSE2")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Gray<kernels::reference::GrayPlane>)->Name("BM_GrayPlainLoop")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GrayOpenCv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Histogram<kernels::HsvHistogram, SmallColor>)->Name("BM_Hsv")->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Histogram<kernels::HsvHistogram, SmallColor>, HWY_AVX3>)
    ->Name("BM_Hsv/AVX-512")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Histogram<kernels::HsvHistogram, SmallColor>, HWY_AVX2>)
    ->Name("BM_Hsv/AVX2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Histogram<kernels::HsvHistogram, SmallColor>, kPlain>)
    ->Name("BM_Hsv/SSE2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Histogram<kernels::reference::HsvHistogram, SmallColor>)
    ->Name("BM_HsvPlainLoop")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HsvOpenCv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Histogram<kernels::LbpHistogram, SmallGray>)->Name("BM_Lbp")->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Histogram<kernels::LbpHistogram, SmallGray>, HWY_AVX2>)
    ->Name("BM_Lbp/AVX2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(AtLevel<BM_Histogram<kernels::LbpHistogram, SmallGray>, kPlain>)
    ->Name("BM_Lbp/SSE2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Histogram<kernels::reference::LbpHistogram, SmallGray>)
    ->Name("BM_LbpPlainLoop")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LbpOpenCv)->Unit(benchmark::kMillisecond);

}  // namespace
