// Whole commands: loaddatabase over many names beside listing and sorting them, and updatefeature and segmentimage
// over a folder of photographs beside its decoding alone.

#include <algorithm>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <dirent.h>

#include "benchmarks/bench-data.h"
#include "features/feature-list.h"
#include "features/function-update-feature.h"
#include "images/function-load-database.h"
#include "images/image-rgb.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "segmentation/function-segment-image.h"

namespace {

constexpr int kPhotoCount = 200;

/// Empty files, as many as the argument says. Nothing, and the bench skipped, if there is no room for them.
std::string Names(benchmark::State& state) {
  const auto count = static_cast<int>(state.range(0));
  if (!HasRoomForEmptyFiles(count)) {
    state.SkipWithError("The directory for temporary files has no room for so many files.");
    return "";
  }
  return PictureDirectory(count, 0, 0);
}

void BM_LoadDatabaseListAndSortAlone(benchmark::State& state) {
  const std::string location = Names(state);
  for (auto _ : state) {
    std::vector<std::string> names;
    DIR* directory = opendir(location.c_str());
    while (const dirent* entry = readdir(directory)) {
      names.emplace_back(entry->d_name);
    }
    closedir(directory);
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
      return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    benchmark::DoNotOptimize(names.data());
  }
}

void BM_LoadDatabase(benchmark::State& state) {
  const std::vector<std::string> parameters = {Quoted(Names(state))};
  TFunctionLoadDatabase load;
  for (auto _ : state) {
    TVarDatabase database;
    load.ExecuteWithReturn(database, parameters);
    state.PauseTiming();
    // The images go with the variable, which is no part of loading.
    TVarDatabase empty;
    database.Assign(&empty);
    state.ResumeTiming();
  }
}

void BM_PhotosDecodeAlone(benchmark::State& state) {
  const std::string location = PictureDirectory(kPhotoCount, 640, 480);
  for (auto _ : state) {
    for (int i = 1; i <= kPhotoCount; ++i) {
      TImageRGB picture;
      picture.LoadFromFile(location + "/im" + std::to_string(i) + ".jpg");
      benchmark::DoNotOptimize(picture.GetPixels());
    }
  }
}

void BM_UpdateFeature(benchmark::State& state, const char* feature) {
  const auto store = DatabaseStore(PictureDirectory(kPhotoCount, 640, 480));
  const TFeatureList features;
  TFunctionUpdateFeature update;
  update.SetVarList(store.get());
  update.SetFeatureList(&features);
  for (auto _ : state) {
    update.Execute({"db", Quoted(feature)});
  }
}

void BM_SegmentGrid(benchmark::State& state) {
  const auto store = DatabaseStore(PictureDirectory(kPhotoCount, 640, 480));
  TFunctionSegmentImage segment;
  segment.SetVarList(store.get());
  for (auto _ : state) {
    segment.Execute({"db", Quoted("grid")});
  }
}

BENCHMARK(BM_LoadDatabaseListAndSortAlone)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadDatabase)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PhotosDecodeAlone)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeature, hsv, "hsv")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeature, lbp, "lbp")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SegmentGrid)->Unit(benchmark::kMillisecond);

}  // namespace
