// Whole commands: loaddatabase over many names beside listing and sorting them, updatefeature and segmentimage over a
// folder of photographs beside its decoding alone, and the two displays of a ranking beside the decoding of whole
// pictures.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <dirent.h>

#include "benchmarks/bench-data.h"
#include "engine/function.h"
#include "features/commands.h"
#include "features/feature-list.h"
#include "gui/commands.h"
#include "gui/dialog-runner.h"
#include "images/commands.h"
#include "images/image-rgb.h"
#include "images/tile.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/var-database-index.h"
#include "segmentation/commands.h"
#include "segmentation/interest-points-sift.h"

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
  const auto load = MakeLoadDatabase();
  for (auto _ : state) {
    TVarDatabase database;
    load->ExecuteWithReturn(database, parameters);
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

/// Where the photographs have no segments, the feature is that of the whole pictures alone.
void UpdateFeature(benchmark::State& state, const char* feature, bool hasSegments) {
  const auto store = DatabaseStore(PictureDirectory(kPhotoCount, 640, 480));
  if (hasSegments) {
    const auto segment = MakeSegmentImage();
    segment->SetVarList(store.get());
    segment->Execute({"db", Quoted("grid")});
  }
  const TFeatureList features;
  const auto update = MakeUpdateFeature();
  update->SetVarList(store.get());
  update->SetFeatureList(&features);
  for (auto _ : state) {
    update->Execute({"db", Quoted(feature)});
  }
}

void BM_UpdateFeature(benchmark::State& state, const char* feature) {
  UpdateFeature(state, feature, false);
}

void BM_UpdateFeatureGrid(benchmark::State& state, const char* feature) {
  UpdateFeature(state, feature, true);
}

void BM_SegmentSift(benchmark::State& state) {
  const std::string location = PictureDirectory(kPhotoCount, 640, 480);
  for (auto _ : state) {
    state.PauseTiming();
    // The method adds to what is there.
    const auto store = DatabaseStore(location);
    const auto segment = MakeSegmentImage();
    segment->SetVarList(store.get());
    state.ResumeTiming();
    segment->Execute({"db", Quoted("sift")});
    state.PauseTiming();
    if (dynamic_cast<const TVarDatabase*>(store->Find("db"))->GetImages().back()->GetSegments().empty()) {
      state.SkipWithError("Nothing found.");
    }
    state.ResumeTiming();
  }
}

void BM_SegmentSiftDetectAlone(benchmark::State& state) {
  const std::string location = PictureDirectory(kPhotoCount, 640, 480);
  for (auto _ : state) {
    for (int i = 1; i <= kPhotoCount; ++i) {
      TImageRGB picture;
      picture.LoadFromFile(location + "/im" + std::to_string(i) + ".jpg");
      std::vector<TInterestPoint> points;
      TInterestPointsSift().Detect(picture, points);
      benchmark::DoNotOptimize(points.data());
    }
  }
}

void BM_SegmentGrid(benchmark::State& state) {
  const auto store = DatabaseStore(PictureDirectory(kPhotoCount, 640, 480));
  const auto segment = MakeSegmentImage();
  segment->SetVarList(store.get());
  for (auto _ : state) {
    segment->Execute({"db", Quoted("grid")});
  }
}

constexpr int kSamples = 110;

/// A ranking of the enlarged samples, without a query.
std::unique_ptr<TVarList> RankedPhotographs() {
  auto store = DatabaseStore(EnlargedSampleDirectory(1, kSamples));
  auto index = std::make_unique<TVarDatabaseIndex>();
  index->SetName("index");
  index->Begin(dynamic_cast<const TVarDatabase&>(*store->Find("db")), "");
  for (int i = 0; i < kSamples; ++i) {
    index->AddEntry(i, i);
  }
  store->Add(std::move(index));
  return store;
}

template <auto TMake>
void BM_Display(benchmark::State& state) {
  const auto store = RankedPhotographs();
  int dialogs = 0;
  const TDialogRunnerScope scope([&](QDialog&) { ++dialogs; });
  const auto display = TMake();
  display->SetVarList(store.get());
  for (auto _ : state) {
    display->Execute({"index"});
  }
  if (dialogs == 0) {
    state.SkipWithError("Nothing displayed.");
  }
}

/// The tiles of the first photographs out of whole pictures: as many, and as wide, as the arguments say.
void BM_DisplayFullDecoding(benchmark::State& state) {
  const auto store = RankedPhotographs();
  const auto& images = dynamic_cast<const TVarDatabase*>(store->Find("db"))->GetImages();
  const auto width = static_cast<int>(state.range(1));
  for (auto _ : state) {
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      TImageRGB picture;
      TImageRGB tile;
      picture.LoadFromFile(images[static_cast<std::size_t>(i)]->GetFilename());
      picture.ScaleTo(tile, width, picture.GetHeight() * width / picture.GetWidth());
      benchmark::DoNotOptimize(tile.GetPixels());
    }
  }
}

/// How far the tiles of all enlarged samples are from those out of whole pictures, in gray levels.
void BM_TileDifference(benchmark::State& state) {
  const auto store = RankedPhotographs();
  const auto width = static_cast<int>(state.range(0));
  double sum = 0.0;
  double count = 0.0;
  double largest = 0.0;
  for (auto _ : state) {
    for (const auto& image : dynamic_cast<const TVarDatabase*>(store->Find("db"))->GetImages()) {
      TImageRGB picture;
      TImageRGB full;
      TImageRGB tile;
      picture.LoadFromFile(image->GetFilename());
      picture.ScaleTo(full, width, picture.GetHeight() * width / picture.GetWidth());
      LoadTile(image->GetFilename(), width, tile);
      for (int y = 0; y < full.GetHeight(); ++y) {
        const unsigned char* fullRow = full.GetPixels() + static_cast<std::ptrdiff_t>(y) * full.GetStride();
        const unsigned char* row = tile.GetPixels() + static_cast<std::ptrdiff_t>(y) * tile.GetStride();
        for (int x = 0; x < 3 * width; ++x) {
          const double difference = std::abs(fullRow[x] - row[x]);
          sum += difference;
          largest = std::max(largest, difference);
          ++count;
        }
      }
    }
  }
  state.counters["mean"] = sum / count;
  state.counters["largest"] = largest;
}

BENCHMARK(BM_LoadDatabaseListAndSortAlone)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadDatabase)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PhotosDecodeAlone)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeature, hsv, "hsv")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeature, lbp, "lbp")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeatureGrid, hsv, "hsv")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UpdateFeatureGrid, lbp, "lbp")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SegmentGrid)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SegmentSift)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SegmentSiftDetectAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Display<MakeDisplayIndex>)->Name("BM_DisplayIndex")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Display<MakeDisplayIndexMap>)->Name("BM_DisplayIndexMap")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DisplayFullDecoding)->Args({16, 160})->Args({40, 120})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TileDifference)->Arg(160)->Arg(120)->Iterations(1)->Repetitions(1);

}  // namespace
