// searchimage over 100,000 images with both features, beside a plain read of the same vectors, and the memory that the
// database takes for each byte of its vectors.

#include <cstdint>

#include <benchmark/benchmark.h>

#include "benchmarks/bench-data.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/function-search-image.h"
#include "retrieval/var-database-index.h"

namespace {

void BM_SearchPlainRead(benchmark::State& state) {
  const auto* database = dynamic_cast<const TVarDatabase*>(Collection().store.Find("db"));
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const auto& image : database->GetImages()) {
      for (const TFeatureVector* vector : image->GetImageSegment().GetFeatures().GetItems()) {
        const auto* words = reinterpret_cast<const std::uint64_t*>(vector->GetData());
        for (int i = 0; i < kVectorLength; ++i) {
          sum += words[i];
        }
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}

void BM_Search(benchmark::State& state) {
  TFunctionSearchImage search;
  search.SetVarList(&Collection().store);
  TVarDatabaseIndex index;
  for (auto _ : state) {
    search.ExecuteWithReturn(index, {"db", "q"});
    benchmark::DoNotOptimize(index.GetEntries().data());
  }
  state.counters["bytesForEachByte"] = Collection().bytesForEachByte;
}

BENCHMARK(BM_SearchPlainRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Search)->Unit(benchmark::kMillisecond);

}  // namespace
