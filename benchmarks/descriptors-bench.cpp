// The descriptors of plugins/ on 640 x 480, and what OpenCV has like them.

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <opencv2/objdetect.hpp>

#include "benchmarks/bench-data.h"
#include "images/image-gray.h"

namespace {

using TProcess = std::int32_t (*)(const unsigned char*, std::int32_t, std::int32_t, std::int32_t, double*);

/// A function of the library Feature<name>.so.
template <typename TFunctionType>
TFunctionType Resolve(const char* name, const char* symbol) {
  void* library = dlopen((std::string(DESCRIPTORS_DIRECTORY "/Feature") + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
  return library == nullptr ? nullptr : reinterpret_cast<TFunctionType>(dlsym(library, symbol));
}

template <typename TImage>
void Measure(benchmark::State& state, const char* name, const char* symbol, const TImage& image) {
  const auto process = Resolve<TProcess>(name, symbol);
  const auto length = Resolve<std::int32_t (*)()>(name, "GetFeatureLength");
  if (process == nullptr || length == nullptr) {
    state.SkipWithError("The library does not load.");
    return;
  }
  std::vector<double> result(static_cast<std::size_t>(length()));
  // The first picture pays for tables and plans.
  process(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), result.data());
  for (auto _ : state) {
    process(image.GetPixels(), image.GetWidth(), image.GetHeight(), image.GetStride(), result.data());
    benchmark::DoNotOptimize(result.data());
  }
}

void BM_DescribeColor(benchmark::State& state, const char* name) {
  Measure(state, name, "ProcessColor", SmallColor());
}

void BM_DescribeGray(benchmark::State& state, const char* name) {
  Measure(state, name, "ProcessGrayscale", SmallGray());
}

/// Histograms of 20 orientations on the cells of "phog". Each is scaled by itself, so the coarser ones cannot be summed
/// up from the finest, but the finest alone tell how long one pass takes.
void BM_HogOpenCv(benchmark::State& state, const std::vector<int>& levels) {
  cv::setNumThreads(1);
  const cv::Mat gray(480, 640, CV_8UC1, const_cast<unsigned char*>(SmallGray().GetPixels()),
                     static_cast<std::size_t>(SmallGray().GetStride()));
  std::vector<cv::HOGDescriptor> descriptors;
  std::size_t length = 0;
  for (const int cells : levels) {
    const cv::Size cell(640 / cells, 480 / cells);
    descriptors.emplace_back(cv::Size(640, 480), cell, cell, cell, 20);
    descriptors.back().gammaCorrection = false;
    length += descriptors.back().getDescriptorSize();
  }
  if (length != std::accumulate(levels.begin(), levels.end(), 0u, [](std::size_t sum, int cells) {
        return sum + static_cast<std::size_t>(20 * cells * cells);
      })) {
    state.SkipWithError("OpenCV has other cells.");
    return;
  }
  std::vector<float> result;
  for (auto _ : state) {
    for (const cv::HOGDescriptor& descriptor : descriptors) {
      descriptor.compute(gray, result);
      benchmark::DoNotOptimize(result.data());
    }
  }
}

BENCHMARK_CAPTURE(BM_DescribeGray, edgehistogram, "EdgeHistogram")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColor, colorlayout, "ColorLayout")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColor, correlogram, "Correlogram")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeGray, phog, "Phog")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeGray, gist, "Gist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeGray, tamura, "Tamura")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColor, cedd, "Cedd")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColor, moments, "Moments")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HogOpenCv, all, {1, 2, 4})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HogOpenCv, finest, {4})->Unit(benchmark::kMillisecond);

}  // namespace
