// Queries of "nearest" beside a plain read of the stored vectors and the exhaustive searches of OpenCV and FAISS, over
// random vectors and over histograms of photographs.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <faiss/IndexFlat.h>
#include <omp.h>
#include <opencv2/features2d.hpp>

#include "benchmarks/bench-data.h"
#include "classifiers/classifier-nearest-neighbor.h"
#include "classifiers/distance-bounds.h"
#include "engine/function.h"
#include "features/commands.h"
#include "features/feature-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "kernels/l1-distance.h"
#include "segmentation/commands.h"

namespace {

constexpr int kHistograms = 10000;
constexpr std::size_t kQueries = 64;

/// A classifier, half of its examples positive, and queries.
struct TNeighbors {
  /// As many rows as the count says become examples, the others queries.
  TNeighbors(const std::vector<std::vector<double>>& rows, std::size_t count) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      auto vector = std::make_unique<TFeatureVector>();
      vector->SetLength(kVectorLength);
      std::copy(rows[i].begin(), rows[i].end(), vector->GetData());
      if (i >= count) {
        queries.push_back(std::move(vector));
        continue;
      }
      examples.push_back(vector.get());
      if (i < count / 2) {
        classifier.AddPositiveExample(vector.release());
      } else {
        classifier.AddNegativeExample(vector.release());
      }
    }
  }

  TClassifierNearestNeighbor classifier;
  /// Those of the classifier, which owns them.
  std::vector<const TFeatureVector*> examples;
  std::vector<std::unique_ptr<TFeatureVector>> queries;
};

std::unique_ptr<TNeighbors> AtRandom(const benchmark::State& state) {
  std::mt19937_64 random(2);
  std::vector<std::vector<double>> rows(static_cast<std::size_t>(state.range(0)) + 1,
                                        std::vector<double>(kVectorLength));
  for (auto& row : rows) {
    FillAtRandom(row.data(), kVectorLength, random);
  }
  return std::make_unique<TNeighbors>(rows, rows.size() - 1);
}

/// Appends the vectors "hsv" of all segments of the grid.
void AppendHistograms(const std::string& location, std::vector<std::vector<double>>& rows) {
  const auto store = DatabaseStore(location);
  const auto segment = MakeSegmentImage();
  segment->SetVarList(store.get());
  segment->Execute({"db", Quoted("grid")});
  const TFeatureList features;
  const auto update = MakeUpdateFeature();
  update->SetVarList(store.get());
  update->SetFeatureList(&features);
  update->Execute({"db", Quoted("hsv")});
  for (const auto& image : dynamic_cast<const TVarDatabase*>(store->Find("db"))->GetImages()) {
    for (const auto& part : image->GetSegments()) {
      const double* data = part->GetFeatures().Find("hsv")->GetData();
      rows.emplace_back(data, data + kVectorLength);
    }
  }
}

/// Histograms of photographs; as these are too few, those of their parts to the right and below the middle of the first
/// cell come after them. The queries are histograms of other photographs.
const TNeighbors& Histograms() {
  static const std::unique_ptr<TNeighbors> neighbors = [] {
    std::vector<std::vector<double>> rows;
    AppendHistograms(SampleDirectory(1, 100), rows);
    AppendHistograms(CutSampleDirectory(1, 100), rows);
    rows.resize(kHistograms);
    std::vector<std::vector<double>> others;
    AppendHistograms(SampleDirectory(101, 110), others);
    for (std::size_t i = 0; i < kQueries; ++i) {
      rows.push_back(others[i * others.size() / kQueries]);
    }
    return std::make_unique<TNeighbors>(rows, kHistograms);
  }();
  return *neighbors;
}

void CountQueries(benchmark::State& state) {
  state.counters["perQuery"] =
      benchmark::Counter(kQueries, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Classify(benchmark::State& state, const TNeighbors& neighbors) {
  for (auto _ : state) {
    for (const auto& query : neighbors.queries) {
      benchmark::DoNotOptimize(neighbors.classifier.Classify(*query));
    }
  }
}

/// The rows and queries as floats, each in one block.
struct TFloats {
  explicit TFloats(const TNeighbors& neighbors) {
    for (const TFeatureVector* example : neighbors.examples) {
      rows.insert(rows.end(), example->GetData(), example->GetData() + kVectorLength);
    }
    for (const auto& query : neighbors.queries) {
      queries.insert(queries.end(), query->GetData(), query->GetData() + kVectorLength);
    }
  }

  std::vector<float> rows;
  std::vector<float> queries;
};

/// `find` gives the position of the nearest row for the numbers of a query.
template <typename TFind>
void FindNearest(benchmark::State& state, const TNeighbors& neighbors, TFloats& floats, const TFind& find) {
  std::vector<std::int64_t> found(neighbors.queries.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < found.size(); ++i) {
      found[i] = find(floats.queries.data() + i * kVectorLength);
    }
  }
  for (std::size_t i = 0; i < found.size(); ++i) {
    const bool isPositive = found[i] < static_cast<std::int64_t>(neighbors.examples.size() / 2);
    if (isPositive != (neighbors.classifier.Classify(*neighbors.queries[i]) > 0)) {
      state.SkipWithError("The two find different classes.");
      return;
    }
  }
}

void FindWithFaiss(benchmark::State& state, const TNeighbors& neighbors) {
  omp_set_num_threads(1);
  TFloats floats(neighbors);
  faiss::IndexFlat index(kVectorLength, faiss::METRIC_L1);
  index.add(static_cast<faiss::Index::idx_t>(neighbors.examples.size()), floats.rows.data());
  FindNearest(state, neighbors, floats, [&](const float* query) {
    float distance = 0.0F;
    faiss::Index::idx_t label = 0;
    index.search(1, query, 1, &distance, &label);
    return std::int64_t{label};
  });
}

void FindWithOpenCv(benchmark::State& state, const TNeighbors& neighbors) {
  cv::setNumThreads(1);
  TFloats floats(neighbors);
  const cv::Mat rows(static_cast<int>(neighbors.examples.size()), kVectorLength, CV_32F, floats.rows.data());
  const cv::BFMatcher matcher(cv::NORM_L1);
  std::vector<cv::DMatch> matches;
  FindNearest(state, neighbors, floats, [&](float* query) {
    matcher.match(cv::Mat(1, kVectorLength, CV_32F, query), rows, matches);
    return std::int64_t{matches.front().trainIdx};
  });
}

void BM_Nearest(benchmark::State& state) {
  Classify(state, *AtRandom(state));
}

void BM_NearestPlainRead(benchmark::State& state) {
  const auto neighbors = AtRandom(state);
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const TFeatureVector* example : neighbors->examples) {
      const auto* words = reinterpret_cast<const std::uint64_t*>(example->GetData());
      for (int i = 0; i < kVectorLength; ++i) {
        sum += words[i];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}

void BM_NearestFaiss(benchmark::State& state) {
  FindWithFaiss(state, *AtRandom(state));
}

void BM_NearestOpenCv(benchmark::State& state) {
  FindWithOpenCv(state, *AtRandom(state));
}

void BM_NearestHistograms(benchmark::State& state) {
  Classify(state, Histograms());
  CountQueries(state);
}

std::vector<const double*> Rows(const TNeighbors& neighbors) {
  std::vector<const double*> rows;
  for (const TFeatureVector* example : neighbors.examples) {
    rows.push_back(example->GetData());
  }
  return rows;
}

/// What the first question after a change takes more than the next: making the compact form.
void BM_NearestFirstQuestion(benchmark::State& state) {
  const std::vector<const double*> rows = Rows(Histograms());
  std::size_t memory = 0;
  for (auto _ : state) {
    memory = TDistanceBounds::Make(rows, kVectorLength)->GetMemory();
  }
  state.counters["bytesForEachByte"] = static_cast<double>(memory) / (kHistograms * kVectorLength * sizeof(double));
}

void BM_NearestCompareAll(benchmark::State& state) {
  const std::vector<const double*> rows = Rows(Histograms());
  const double* query = Histograms().queries.front()->GetData();
  for (auto _ : state) {
    double distance = std::numeric_limits<double>::max();
    benchmark::DoNotOptimize(kernels::FindNearestL1(query, kVectorLength, rows.data(), rows.size(), distance));
  }
}

void BM_NearestHistogramsFaiss(benchmark::State& state) {
  FindWithFaiss(state, Histograms());
  CountQueries(state);
}

void BM_NearestHistogramsOpenCv(benchmark::State& state) {
  FindWithOpenCv(state, Histograms());
  CountQueries(state);
}

BENCHMARK(BM_Nearest)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestPlainRead)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestFaiss)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestOpenCv)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestHistograms)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestFirstQuestion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestCompareAll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestHistogramsFaiss)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestHistogramsOpenCv)->Unit(benchmark::kMillisecond);

}  // namespace
