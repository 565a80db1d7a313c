// Classifiers: learnvisualconcept and findvisualconceptlocations with "svm" beside the bare calls of its library, and a
// query of "nearest" beside the flat index of FAISS and a plain read of the stored vectors.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <faiss/IndexFlat.h>
#include <omp.h>
#include <svm.h>

#include "benchmarks/bench-data.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier-nearest-neighbor.h"
#include "classifiers/var-classifier.h"
#include "concepts/function-find-visual-concept-locations.h"
#include "concepts/function-learn-visual-concept.h"
#include "concepts/var-visual-concept.h"
#include "features/feature-list.h"
#include "features/function-update-feature.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "segmentation/function-segment-image.h"

namespace {

constexpr int kPhotos = 10;

/// The databases "positive" and "negative" of photographs cut by the grid, with one feature or both on every segment,
/// and the concept "concept" that the classifier "classifier" has learned from them.
class TLesson {
 public:
  explicit TLesson(int length) {
    svm_set_print_string_function([](const char*) {});
    AddDatabase("positive", 1, length);
    AddDatabase("negative", 1 + kPhotos, length);
    auto classifier = std::make_unique<TVarClassifier>();
    classifier->SetName("classifier");
    store.Add(std::move(classifier));
    auto concept_ = std::make_unique<TVarVisualConcept>();
    concept_->SetName("concept");
    store.Add(std::move(concept_));
    learn.SetVarList(&store);
    learn.SetClassifierList(&classifiers);
    Forget();
    Learn();
  }

  TVarClassifier& Classifier() { return *dynamic_cast<TVarClassifier*>(store.Find("classifier")); }

  void Forget() { Classifier().SetClassifierType("svm"); }

  void Learn() { learn.ExecuteWithReturn(*store.Find("concept"), {"positive", "negative", "classifier"}); }

  TVarList store;

 private:
  void AddDatabase(const char* name, int first, int length) {
    auto database = std::make_unique<TVarDatabase>();
    database->SetName(name);
    database->SetLocation(SampleDirectory(first, first + kPhotos - 1));
    database->ScanDirectory();
    store.Add(std::move(database));
    const TFeatureList features;
    TFunctionSegmentImage segment;
    segment.SetVarList(&store);
    segment.Execute({name, Quoted("grid")});
    TFunctionUpdateFeature update;
    update.SetVarList(&store);
    update.SetFeatureList(&features);
    update.Execute({name, Quoted("hsv")});
    if (length > kVectorLength) {
      update.Execute({name, Quoted("lbp")});
    }
  }

  TClassifierList classifiers;
  TFunctionLearnVisualConcept learn;
};

TLesson& Lesson(const benchmark::State& state) {
  static TLesson one(kVectorLength);
  static TLesson two(2 * kVectorLength);
  return state.range(0) == kVectorLength ? one : two;
}

/// The examples of a classifier, which training has scaled, as the library takes them.
class TProblem {
 public:
  explicit TProblem(const TClassifier& classifier) {
    AddRows(classifier.GetPositiveExamples(), 1.0);
    AddRows(classifier.GetNegativeExamples(), -1.0);
    parameter.svm_type = C_SVC;
    parameter.kernel_type = RBF;
    parameter.gamma = 1.0 / classifier.GetPositiveExamples().GetItems().front()->GetLength();
    parameter.cache_size = 100;
    parameter.eps = 0.001;
    parameter.C = 32768;
    parameter.shrinking = 1;
  }

  svm_model* Train() {
    std::vector<svm_node*> pointers;
    for (auto& row : rows) {
      pointers.push_back(row.get());
    }
    const svm_problem problem = {static_cast<int>(rows.size()), labels.data(), pointers.data()};
    return svm_train(&problem, &parameter);
  }

  std::vector<std::unique_ptr<svm_node[]>> rows;

 private:
  void AddRows(const TFeatureVectorList& examples, double label) {
    for (const TFeatureVector* example : examples.GetItems()) {
      const auto length = static_cast<int>(example->GetLength());
      rows.push_back(std::make_unique_for_overwrite<svm_node[]>(example->GetLength() + std::size_t{1}));
      for (int i = 0; i < length; ++i) {
        rows.back()[static_cast<std::size_t>(i)] = {i, example->GetData()[i]};
      }
      rows.back()[example->GetLength()] = {-1, 0.0};
      labels.push_back(label);
    }
  }

  std::vector<double> labels;
  svm_parameter parameter = {};
};

void BM_SvmLearn(benchmark::State& state) {
  TLesson& lesson = Lesson(state);
  for (auto _ : state) {
    state.PauseTiming();
    lesson.Forget();
    state.ResumeTiming();
    lesson.Learn();
  }
}

void BM_SvmLearnLibraryAlone(benchmark::State& state) {
  const TClassifier& classifier = *Lesson(state).Classifier().GetClassifier();
  for (auto _ : state) {
    TProblem problem(classifier);
    svm_model* model = problem.Train();
    state.PauseTiming();
    svm_free_and_destroy_model(&model);
    state.ResumeTiming();
  }
}

void BM_SvmLocate(benchmark::State& state) {
  TFunctionFindVisualConceptLocations find;
  find.SetVarList(&Lesson(state).store);
  for (auto _ : state) {
    find.Execute({"positive", "concept", Quoted("here")});
  }
}

void BM_SvmLocateLibraryAlone(benchmark::State& state) {
  TLesson& lesson = Lesson(state);
  TProblem problem(*lesson.Classifier().GetClassifier());
  svm_model* model = problem.Train();
  std::size_t positives = 0;
  for (const auto& image : dynamic_cast<const TVarDatabase*>(lesson.store.Find("positive"))->GetImages()) {
    positives += image->GetSegments().size();
  }
  for (auto _ : state) {
    for (std::size_t i = 0; i < positives; ++i) {
      benchmark::DoNotOptimize(svm_predict(model, problem.rows[i].get()));
    }
  }
  state.counters["rows"] = static_cast<double>(positives);
  state.counters["supportVectors"] = svm_get_nr_sv(model);
  svm_free_and_destroy_model(&model);
}

/// A classifier of as many examples as the bench says, half of them positive, and a query.
struct TNeighbours {
  explicit TNeighbours(const benchmark::State& state) {
    std::mt19937_64 random(2);
    query.SetLength(kVectorLength);
    FillAtRandom(query.GetData(), random);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      auto vector = std::make_unique<TFeatureVector>();
      vector->SetLength(kVectorLength);
      FillAtRandom(vector->GetData(), random);
      examples.push_back(vector.get());
      if (i < state.range(0) / 2) {
        classifier.AddPositiveExample(vector.release());
      } else {
        classifier.AddNegativeExample(vector.release());
      }
    }
  }

  TClassifierNearestNeighbor classifier;
  /// Those of the classifier, which owns them.
  std::vector<const TFeatureVector*> examples;
  TFeatureVector query;
};

void CountNumbers(benchmark::State& state) {
  state.counters["perNumber"] =
      benchmark::Counter(static_cast<double>(state.range(0)) * kVectorLength,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Nearest(benchmark::State& state) {
  const TNeighbours neighbours(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(neighbours.classifier.Classify(neighbours.query));
  }
  CountNumbers(state);
}

void BM_NearestPlainRead(benchmark::State& state) {
  const TNeighbours neighbours(state);
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const TFeatureVector* example : neighbours.examples) {
      const auto* words = reinterpret_cast<const std::uint64_t*>(example->GetData());
      for (int i = 0; i < kVectorLength; ++i) {
        sum += words[i];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  CountNumbers(state);
}

void BM_NearestFaiss(benchmark::State& state) {
  omp_set_num_threads(1);
  const TNeighbours neighbours(state);
  faiss::IndexFlat index(kVectorLength, faiss::METRIC_L1);
  std::vector<float> numbers(kVectorLength);
  for (const TFeatureVector* example : neighbours.examples) {
    std::copy_n(example->GetData(), kVectorLength, numbers.begin());
    index.add(1, numbers.data());
  }
  std::copy_n(neighbours.query.GetData(), kVectorLength, numbers.begin());
  float distance = 0.0F;
  faiss::Index::idx_t label = 0;
  for (auto _ : state) {
    index.search(1, numbers.data(), 1, &distance, &label);
  }
  if ((label < state.range(0) / 2) != (neighbours.classifier.Classify(neighbours.query) > 0)) {
    state.SkipWithError("The two find different neighbours.");
  }
  CountNumbers(state);
}

BENCHMARK(BM_SvmLearn)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SvmLearnLibraryAlone)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SvmLocate)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SvmLocateLibraryAlone)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nearest)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestPlainRead)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestFaiss)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);

}  // namespace
