// The parts of an experiment: distances of many queries beside those of searchimage, the ranking of a topic beside its
// sort, and the extraction of features beside the decoding.

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/bench-data.h"
#include "experiments/collection.h"
#include "experiments/feature-files.h"
#include "experiments/ranking.h"
#include "features/feature-hsv.h"
#include "features/feature-lbp.h"
#include "images/image-rgb.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "kernels/l1-distance-tile.h"
#include "retrieval/feature-distance.h"

namespace {

/// As many as an experiment on 100,000 pictures takes at a time.
constexpr std::size_t kQueries = 41;

std::vector<const TFeatureVectorList*> Lists() {
  const auto& database = *dynamic_cast<const TVarDatabase*>(Collection({kCollectionSize, 1, 256}).store.Find("db"));
  std::vector<const TFeatureVectorList*> lists;
  for (const auto& image : database.GetImages()) {
    lists.push_back(&image->GetImageSegment().GetFeatures());
  }
  return lists;
}

void CountQueries(benchmark::State& state, std::size_t queries) {
  state.counters["perQuery"] = benchmark::Counter(
      static_cast<double>(queries), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_ExperimentDistances(benchmark::State& state) {
  const auto lists = Lists();
  std::vector<const double*> rows;
  for (const TFeatureVectorList* list : lists) {
    rows.push_back(list->GetItems().front()->GetData());
  }
  std::vector<double> sums;
  for (auto _ : state) {
    sums.assign(kQueries * rows.size(), 0.0);
    kernels::AddL1DistanceTile(rows.data(), kQueries, rows.data(), rows.size(), 256, sums.data(), rows.size());
    benchmark::DoNotOptimize(sums.data());
  }
  const std::string name = lists.front()->GetItems().front()->GetName();
  const std::vector<double> expected = GetDistances(*lists[7], {name}, lists);
  if (!std::equal(expected.begin(), expected.end(), sums.begin() + static_cast<std::ptrdiff_t>(7 * rows.size()))) {
    state.SkipWithError("The distances differ.");
  }
  CountQueries(state, kQueries);
}

void BM_ExperimentSearchDistances(benchmark::State& state) {
  const auto lists = Lists();
  const std::string name = lists.front()->GetItems().front()->GetName();
  for (auto _ : state) {
    benchmark::DoNotOptimize(GetDistances(*lists[7], {name}, lists).data());
  }
  CountQueries(state, 1);
}

std::vector<double> RandomDistances() {
  std::mt19937_64 random(1);
  std::vector<double> distances(kCollectionSize);
  FillAtRandom(distances.data(), kCollectionSize, random);
  return distances;
}

/// One picture in a hundred is relevant.
void BM_ExperimentRank(benchmark::State& state) {
  const std::vector<double> distances = RandomDistances();
  std::vector<std::vector<std::uint32_t>> tags(distances.size());
  for (std::size_t picture = 0; picture < tags.size(); picture += 100) {
    tags[picture] = {0};
  }
  TRanker ranker(tags, 1, false, 1000);
  const std::vector<std::uint32_t> asked = {0};
  for (auto _ : state) {
    benchmark::DoNotOptimize(ranker.Rank(distances, 0, asked).results.data());
  }
}

void BM_ExperimentSortAlone(benchmark::State& state) {
  const std::vector<double> distances = RandomDistances();
  std::vector<kernels::TRankEntry> entries;
  for (auto _ : state) {
    entries.clear();
    for (std::size_t i = 0; i < distances.size(); ++i) {
      entries.push_back({static_cast<std::int32_t>(i), distances[i]});
    }
    kernels::RankSort(entries);
    benchmark::DoNotOptimize(entries.data());
  }
}

constexpr int kPhotographs = 1000;

void BM_ExperimentExtract(benchmark::State& state) {
  std::string reason;
  const auto collection = ReadCollection(PictureDirectory(kPhotographs, 640, 480), reason);
  const TFeatureHsv hsv;
  const TFeatureLbp lbp;
  const std::vector<TFeatureSource> sources = {{&hsv, "1"}, {&lbp, "1"}};
  EnterWorkDirectory("experiment");
  TProgress progress(true);
  for (auto _ : state) {
    std::filesystem::remove_all("features");
    if (ExtractFeatures(*collection, sources, {}, "features", progress, reason) != TStepOutcome::kDone) {
      state.SkipWithError(reason.c_str());
    }
  }
}

void BM_ExperimentDecodeAlone(benchmark::State& state) {
  std::string reason;
  const auto collection = ReadCollection(PictureDirectory(kPhotographs, 640, 480), reason);
  for (auto _ : state) {
    TImageRGB picture;
    for (std::size_t i = 0; i < collection->names.size(); ++i) {
      picture.LoadFromFile(collection->GetPath(i));
      benchmark::DoNotOptimize(picture.GetPixels());
    }
  }
}

BENCHMARK(BM_ExperimentDistances)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExperimentSearchDistances)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExperimentRank)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExperimentSortAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExperimentExtract)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExperimentDecodeAlone)->Unit(benchmark::kMillisecond);

}  // namespace
