// Whole commands: loaddatabase over 100,000 names beside listing and sorting them, and updatefeature and segmentimage
// over a folder of photographs beside its decoding alone.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
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

void BM_LoadDatabaseListAndSortAlone(benchmark::State& state) {
  const std::string location = PictureDirectory(kCollectionSize, 0, 0);
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
  const std::vector<std::string> parameters = {Quoted(PictureDirectory(kCollectionSize, 0, 0))};
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

/// A store with the folder as the database "db".
std::unique_ptr<TVarList> PhotoStore() {
  auto store = std::make_unique<TVarList>();
  auto database = std::make_unique<TVarDatabase>();
  database->SetName("db");
  database->SetLocation(PictureDirectory(kPhotoCount, 640, 480));
  database->ScanDirectory();
  store->Add(std::move(database));
  return store;
}

void BM_UpdateFeature(benchmark::State& state, const char* feature) {
  const auto store = PhotoStore();
  const TFeatureList features;
  TFunctionUpdateFeature update;
  update.SetVarList(store.get());
  update.SetFeatureList(&features);
  for (auto _ : state) {
    update.Execute({"db", Quoted(feature)});
  }
}

void BM_SegmentGrid(benchmark::State& state) {
  const auto store = PhotoStore();
  TFunctionSegmentImage segment;
  segment.SetVarList(store.get());
  for (auto _ : state) {
    segment.Execute({"db", Quoted("grid")});
  }
}

BENCHMARK(BM_LoadDatabaseListAndSortAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadDatabase)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PhotosDecodeAlone)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeature, hsv, "hsv")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeature, lbp, "lbp")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SegmentGrid)->Unit(benchmark::kMillisecond);

}  // namespace
