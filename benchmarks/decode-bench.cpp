// LoadFromFile beside the library's own decoding of the same file.

#include <FreeImage.h>
#include <benchmark/benchmark.h>

#include "benchmarks/bench-data.h"
#include "images/image-rgb.h"
#include "images/tile.h"

namespace {

void BM_DecodeLibraryAlone(benchmark::State& state) {
  const std::string file =
      PictureDirectory(1, static_cast<int>(state.range(0)), static_cast<int>(state.range(1))) + "/im1.jpg";
  for (auto _ : state) {
    FIBITMAP* bitmap = FreeImage_Load(FIF_JPEG, file.c_str(), 0);
    benchmark::DoNotOptimize(FreeImage_GetBits(bitmap));
    FreeImage_Unload(bitmap);
  }
}

void BM_DecodeLoadFromFile(benchmark::State& state) {
  const std::string file =
      PictureDirectory(1, static_cast<int>(state.range(0)), static_cast<int>(state.range(1))) + "/im1.jpg";
  for (auto _ : state) {
    TImageRGB picture;
    picture.LoadFromFile(file);
    benchmark::DoNotOptimize(picture.GetPixels());
  }
}

void BM_TileOfLargePicture(benchmark::State& state) {
  TImageRGB tile;
  const TImageRGB& picture = Mosaic(4000, 3000);
  for (auto _ : state) {
    picture.ScaleTo(tile, 160, 120);
    benchmark::DoNotOptimize(tile.GetPixels());
  }
}

BENCHMARK(BM_DecodeLibraryAlone)->Args({640, 480})->Args({4000, 3000})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeLoadFromFile)->Args({640, 480})->Args({4000, 3000})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TileOfLargePicture)->Unit(benchmark::kMillisecond);

}  // namespace
