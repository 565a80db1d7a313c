// learnvisualconcept and findvisualconceptlocations with "svm" beside the bare calls of its library.

#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <svm.h>

#include "benchmarks/bench-data.h"
#include "benchmarks/svm-problem.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier.h"
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

/// How the rows happen to lie in the cache makes a repetition up to a quarter dearer: fifteen, where a few percent
/// count.
void Lengths(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(256)->Arg(512)->Repetitions(15)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_SvmLearn)->Apply(Lengths);
BENCHMARK(BM_SvmLearnLibraryAlone)->Apply(Lengths);
BENCHMARK(BM_SvmLocate)->Apply(Lengths);
BENCHMARK(BM_SvmLocateLibraryAlone)->Apply(Lengths);

}  // namespace
