// searchimage, the whole ranking with its sort, beside a plain read of the same vectors and beside three libraries that
// work out the same distances, of doubles or of floats, in one block, each with the cheapest ranking found for it.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <faiss/IndexFlat.h>
#include <faiss/utils/extra_distances.h>
#include <flann/algorithms/dist.h>
#include <omp.h>
#include <opencv2/core.hpp>

#include "benchmarks/bench-data.h"
#include "benchmarks/simd-level.h"
#include "engine/function.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "kernels/rank-sort.h"
#include "kernels/reference.h"
#include "retrieval/commands.h"
#include "retrieval/var-database-index.h"

namespace {

constexpr int kMillion = 1000000;

/// The arguments of a bench: images, features, length. Null, and the bench skipped, if there is no room for the files.
TCollection* Find(benchmark::State& state) {
  const TCollectionKind kind = {static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                                static_cast<int>(state.range(2))};
  if (!HasRoomForEmptyFiles(kind.images)) {
    state.SkipWithError("The directory for temporary files has no room for so many files.");
    return nullptr;
  }
  return &Collection(kind);
}

const TVarDatabase& Database(const TCollection& collection) {
  return *dynamic_cast<const TVarDatabase*>(collection.store.Find("db"));
}

const TVarImage& Query(const TCollection& collection) {
  return *dynamic_cast<const TVarImage*>(collection.store.Find("q"));
}

const TFeatureVector& FirstVector(const TVarImage& image) {
  return *image.GetImageSegment().GetFeatures().GetItems().front();
}

void BM_SearchPlainRead(benchmark::State& state) {
  const TCollection* collection = Find(state);
  if (collection == nullptr) {
    return;
  }
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const auto& image : Database(*collection).GetImages()) {
      for (const TFeatureVector* vector : image->GetImageSegment().GetFeatures().GetItems()) {
        const auto* words = reinterpret_cast<const std::uint64_t*>(vector->GetData());
        for (std::uint32_t i = 0; i < vector->GetLength(); ++i) {
          sum += words[i];
        }
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}

void BM_Search(benchmark::State& state) {
  TCollection* collection = Find(state);
  if (collection == nullptr) {
    return;
  }
  const auto search = MakeSearchImage();
  search->SetVarList(&collection->store);
  TVarDatabaseIndex index;
  for (auto _ : state) {
    search->ExecuteWithReturn(index, {"db", "q"});
    benchmark::DoNotOptimize(index.GetEntries().data());
  }
  state.counters["bytesForEachByte"] = collection->bytesForEachByte;
}

std::int64_t BestImage(TCollection& collection) {
  const auto search = MakeSearchImage();
  search->SetVarList(&collection.store);
  TVarDatabaseIndex index;
  search->ExecuteWithReturn(index, {"db", "q"});
  return index.GetEntries().front().imageIndex;
}

/// The first vectors of all images as one block, and that of the query.
template <typename TNumber>
struct TMatrix {
  explicit TMatrix(const TCollection& collection) : query(FirstVector(Query(collection)).GetLength()) {
    const auto& images = Database(collection).GetImages();
    rows.resize(images.size() * query.size());
    auto row = rows.begin();
    for (const auto& image : images) {
      row = std::copy_n(FirstVector(*image).GetData(), query.size(), row);
    }
    std::copy_n(FirstVector(Query(collection)).GetData(), query.size(), query.begin());
  }

  int Length() const { return static_cast<int>(query.size()); }
  int Count() const { return static_cast<int>(rows.size() / query.size()); }

  std::vector<TNumber> query;
  std::vector<TNumber> rows;
};

/// A stable ranking. The bits of numbers that are not negative are in their order, and whole words sort a fifth faster
/// than pairs.
std::int64_t Rank(const float* distances, std::size_t count) {
  std::vector<std::uint64_t> ranking(count);
  for (std::size_t i = 0; i < count; ++i) {
    ranking[i] = std::uint64_t{std::bit_cast<std::uint32_t>(distances[i])} << 32 | i;
  }
  std::sort(ranking.begin(), ranking.end());
  return static_cast<std::int64_t>(ranking.front() & 0xffffffffU);
}

/// Of doubles there is no room for the position in a word.
std::int64_t Rank(const double* distances, std::size_t count) {
  std::vector<std::pair<double, int>> ranking(count);
  for (std::size_t i = 0; i < count; ++i) {
    ranking[i] = {distances[i], static_cast<int>(i)};
  }
  std::sort(ranking.begin(), ranking.end());
  return std::int64_t{ranking.front().second};
}

/// The bench of a peer: `prepare` takes the numbers and returns what ranks all images and gives the best one.
template <typename TNumber, typename TPrepare>
void RunPeer(benchmark::State& state, const TPrepare& prepare) {
  cv::setNumThreads(1);
  omp_set_num_threads(1);
  TCollection* collection = Find(state);
  if (collection == nullptr) {
    return;
  }
  // For the time of the bench only: it takes up to two gigabytes.
  TMatrix<TNumber> matrix(*collection);
  const auto search = prepare(matrix);
  std::int64_t best = -1;
  for (auto _ : state) {
    best = search();
  }
  if (best != BestImage(*collection)) {
    state.SkipWithError("The two find different images.");
  }
}

void BM_SearchOpenCv(benchmark::State& state) {
  RunPeer<float>(state, [](TMatrix<float>& matrix) {
    return [query = cv::Mat(1, matrix.Length(), CV_32F, matrix.query.data()),
            rows = cv::Mat(matrix.Count(), matrix.Length(), CV_32F, matrix.rows.data())] {
      cv::Mat distances;
      cv::batchDistance(query, rows, distances, CV_32F, cv::noArray(), cv::NORM_L1);
      return Rank(distances.ptr<float>(), distances.total());
    };
  });
}

/// Its batchDistance takes no doubles; the norm of a difference does, row by row.
void BM_SearchOpenCvDoubles(benchmark::State& state) {
  RunPeer<double>(state, [](TMatrix<double>& matrix) {
    return [query = cv::Mat(1, matrix.Length(), CV_64F, matrix.query.data()),
            rows = cv::Mat(matrix.Count(), matrix.Length(), CV_64F, matrix.rows.data())] {
      std::vector<double> distances;
      distances.reserve(static_cast<std::size_t>(rows.rows));
      for (int i = 0; i < rows.rows; ++i) {
        distances.push_back(cv::norm(query, rows.row(i), cv::NORM_L1));
      }
      return Rank(distances.data(), distances.size());
    };
  });
}

void BM_SearchFaissDistances(benchmark::State& state) {
  RunPeer<float>(state, [](TMatrix<float>& matrix) {
    return [&matrix] {
      std::vector<float> distances(static_cast<std::size_t>(matrix.Count()));
      faiss::pairwise_extra_distances(matrix.Length(), 1, matrix.query.data(), matrix.Count(), matrix.rows.data(),
                                      faiss::METRIC_L1, 0.0F, distances.data());
      return Rank(distances.data(), distances.size());
    };
  });
}

void BM_SearchFaissIndex(benchmark::State& state) {
  faiss::IndexFlat index(state.range(2), faiss::METRIC_L1);
  RunPeer<float>(state, [&index](TMatrix<float>& matrix) {
    index.add(matrix.Count(), matrix.rows.data());
    return [&] {
      std::vector<float> distances(static_cast<std::size_t>(matrix.Count()));
      std::vector<faiss::Index::idx_t> labels(distances.size());
      index.search(1, matrix.query.data(), matrix.Count(), distances.data(), labels.data());
      return std::int64_t{labels.front()};
    };
  });
}

void BM_SearchFlann(benchmark::State& state) {
  RunPeer<double>(state, [](TMatrix<double>& matrix) {
    return [&matrix] {
      const flann::L1<double> distance;
      std::vector<double> distances;
      distances.reserve(static_cast<std::size_t>(matrix.Count()));
      const double* row = matrix.rows.data();
      for (int i = 0; i < matrix.Count(); ++i, row += matrix.query.size()) {
        distances.push_back(distance(matrix.query.data(), row, matrix.query.size()));
      }
      return Rank(distances.data(), distances.size());
    };
  });
}

/// Sorts as many distances as the argument says, in no order, over and over again.
template <auto TSort>
void BM_Rank(benchmark::State& state) {
  std::mt19937_64 random(1);
  std::vector<kernels::TRankEntry> entries;
  for (int i = 0; i < state.range(0); ++i) {
    entries.push_back({i, 0x1p-52 * static_cast<double>(random() >> 11)});
  }
  for (auto _ : state) {
    std::vector<kernels::TRankEntry> ranking = entries;
    TSort(ranking);
    benchmark::DoNotOptimize(ranking.data());
  }
}

void OneFeature(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->Args({kCollectionSize, 1, 256})->Args({kCollectionSize, 1, 512});
  benchmark->Args({kMillion, 1, 256});
}

void OnlySmall(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->Args({kCollectionSize, 1, 256});
}

BENCHMARK(BM_SearchPlainRead)->Args({kCollectionSize, 2, 256})->Apply(OneFeature);
BENCHMARK(BM_Search)->Args({kCollectionSize, 2, 256})->Apply(OneFeature);
BENCHMARK(AtLevel<BM_Search, HWY_AVX2>)->Name("BM_Search/AVX2")->Apply(OnlySmall);
BENCHMARK(AtLevel<BM_Search, kPlain>)->Name("BM_Search/SSE2")->Apply(OnlySmall);
BENCHMARK(BM_SearchOpenCv)->Apply(OneFeature);
BENCHMARK(BM_SearchOpenCvDoubles)->Apply(OneFeature);
BENCHMARK(BM_SearchFaissDistances)->Apply(OneFeature);
BENCHMARK(BM_SearchFaissIndex)->Apply(OnlySmall);
BENCHMARK(BM_SearchFlann)->Apply(OneFeature);
BENCHMARK(BM_Rank<kernels::RankSort>)
    ->Name("BM_RankSort")
    ->Unit(benchmark::kMillisecond)
    ->Arg(kCollectionSize)
    ->Arg(kMillion);
BENCHMARK(BM_Rank<kernels::reference::RankSort>)
    ->Name("BM_RankSortPlain")
    ->Unit(benchmark::kMillisecond)
    ->Arg(kCollectionSize)
    ->Arg(kMillion);

}  // namespace
