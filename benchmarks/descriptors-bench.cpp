// The descriptors of plugins/ on 640 x 480, and what OpenCV has like them.

#include <cstdint>
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

const TImageRGB& Color() {
  return Mosaic(640, 480);
}

const TImageGray& Gray() {
  static TImageGray gray;
  if (gray.GetWidth() == 0) {
    Color().ToGray(gray);
  }
  return gray;
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

void BM_DescribeColour(benchmark::State& state, const char* name) {
  Measure(state, name, "ProcessColor", Color());
}

void BM_DescribeGray(benchmark::State& state, const char* name) {
  Measure(state, name, "ProcessGrayscale", Gray());
}

/// Histograms of 20 orientations on the finest 4 x 4 cells of "phog" alone: the coarser ones are sums of them.
void BM_HogOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const cv::Mat gray(480, 640, CV_8UC1, const_cast<unsigned char*>(Gray().GetPixels()),
                     static_cast<std::size_t>(Gray().GetStride()));
  cv::HOGDescriptor hog({640, 480}, {160, 120}, {160, 120}, {160, 120}, 20);
  hog.gammaCorrection = false;
  std::vector<float> result;
  for (auto _ : state) {
    hog.compute(gray, result);
    benchmark::DoNotOptimize(result.data());
  }
  if (result.size() != 320) {
    state.SkipWithError("OpenCV has other cells.");
  }
}

BENCHMARK_CAPTURE(BM_DescribeGray, edgehistogram, "EdgeHistogram")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColour, colorlayout, "ColorLayout")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColour, correlogram, "Correlogram")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeGray, phog, "Phog")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeGray, gist, "Gist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeGray, tamura, "Tamura")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColour, cedd, "Cedd")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DescribeColour, moments, "Moments")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HogOpenCv)->Unit(benchmark::kMillisecond);

}  // namespace
