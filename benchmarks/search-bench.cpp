// searchimage over 100,000 images with both features, beside a plain read of the same vectors, and the memory that the
// database takes for each byte of its vectors.

#include <cstdint>
#include <memory>
#include <random>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "engine/var-list.h"
#include "features/feature-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/function-search-image.h"
#include "retrieval/var-database-index.h"

#include "benchmarks/bench-data.h"

namespace {

constexpr int kImageCount = 100000;
constexpr int kLength = 256;

std::size_t AllocatedBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void AddVector(TVarImage& image, const char* name, std::mt19937_64& random) {
  auto vector = std::make_unique<TFeatureVector>();
  vector->SetName(name);
  vector->SetLength(kLength);
  for (int i = 0; i < kLength; ++i) {
    vector->GetData()[i] = static_cast<double>(random() >> 11) * 0x1p-61;
  }
  image.GetImageSegment().GetFeatures().Add(vector.release());
}

/// A store with the database "db", of both features, and the query "q".
struct TCollection {
  TCollection() {
    std::mt19937_64 random(1);
    const std::string location = PictureDirectory(kImageCount, 0, 0);
    const std::size_t before = AllocatedBytes();
    auto database = std::make_unique<TVarDatabase>();
    database->SetName("db");
    database->SetLocation(location);
    database->ScanDirectory();
    for (const auto& image : database->GetImages()) {
      AddVector(*image, "hsv", random);
      AddVector(*image, "lbp", random);
    }
    bytesForEachByte = static_cast<double>(AllocatedBytes() - before) /
                       (static_cast<double>(database->GetImages().size()) * 2 * kLength * sizeof(double));
    store.Add(std::move(database));
    auto query = std::make_unique<TVarImage>();
    query->SetName("q");
    AddVector(*query, "hsv", random);
    AddVector(*query, "lbp", random);
    store.Add(std::move(query));
  }

  TVarList store;
  double bytesForEachByte = 0.0;
};

TCollection& Collection() {
  static TCollection collection;
  return collection;
}

void BM_SearchPlainRead(benchmark::State& state) {
  const auto* database = dynamic_cast<const TVarDatabase*>(Collection().store.Find("db"));
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const auto& image : database->GetImages()) {
      for (const TFeatureVector* vector : image->GetImageSegment().GetFeatures().GetItems()) {
        const auto* words = reinterpret_cast<const std::uint64_t*>(vector->GetData());
        for (int i = 0; i < kLength; ++i) {
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
