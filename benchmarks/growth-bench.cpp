// Commands over 1,000, 10,000 and 100,000 small images, for the table of growth. One iteration a repetition: the
// largest take seconds.

#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <svm.h>

#include "benchmarks/bench-data.h"
#include "benchmarks/svm-problem.h"
#include "classifiers/classifier-list.h"
#include "classifiers/var-classifier.h"
#include "concepts/commands.h"
#include "concepts/var-visual-concept.h"
#include "engine/function.h"
#include "features/commands.h"
#include "features/feature-list.h"
#include "images/commands.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/commands.h"
#include "retrieval/var-database-index.h"

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 48;

int Count(const benchmark::State& state) {
  return static_cast<int>(state.range(0));
}

std::unique_ptr<TVarList> SmallImages(const benchmark::State& state) {
  return DatabaseStore(PictureDirectory(Count(state), kWidth, kHeight));
}

void BM_GrowthUpdateFeature(benchmark::State& state) {
  const auto store = SmallImages(state);
  const TFeatureList features;
  const auto update = MakeUpdateFeature();
  update->SetVarList(store.get());
  update->SetFeatureList(&features);
  for (auto _ : state) {
    update->Execute({"db", Quoted("hsv")});
  }
  const auto* database = dynamic_cast<const TVarDatabase*>(store->Find("db"));
  if (database->GetImages().back()->GetImageSegment().GetWidth() != kWidth) {
    state.SkipWithError("Nothing decoded.");
  }
}

void BM_GrowthSearchImage(benchmark::State& state) {
  const auto search = MakeSearchImage();
  search->SetVarList(&Collection({Count(state), 1, kVectorLength}).store);
  TVarDatabaseIndex index;
  for (auto _ : state) {
    search->ExecuteWithReturn(index, {"db", "q"});
  }
}

void BM_GrowthLoadDatabase(benchmark::State& state) {
  const std::vector<std::string> parameters = {Quoted(PictureDirectory(Count(state), kWidth, kHeight))};
  const auto load = MakeLoadDatabase();
  TVarDatabase database;
  for (auto _ : state) {
    load->ExecuteWithReturn(database, parameters);
  }
}

void BM_GrowthLoadFeature(benchmark::State& state) {
  // A directory of its own, so that the files are as many as the images.
  EnterWorkDirectory("work-" + std::to_string(Count(state)));
  std::filesystem::create_directories("FeatureStorage");
  const auto save = MakeSaveFeature();
  save->SetVarList(&Collection({Count(state), 1, kVectorLength}).store);
  save->Execute({"db", Quoted("hsv")});
  const auto store = SmallImages(state);
  const TFeatureList features;
  const auto load = MakeLoadFeature();
  load->SetVarList(store.get());
  load->SetFeatureList(&features);
  for (auto _ : state) {
    load->Execute({"db", Quoted("hsv")});
  }
  const auto* database = dynamic_cast<const TVarDatabase*>(store->Find("db"));
  if (database->GetImages().back()->GetImageSegment().GetFeatures().Find("hsv") == nullptr) {
    state.SkipWithError("Nothing loaded.");
  }
}

/// The databases "positive" and "negative" of half as many images each as the argument says, with one segment and one
/// vector on each image. The classes are well apart: the noise is a tenth of their distance.
class TLesson {
 public:
  TLesson(const benchmark::State& state, const std::string& type) {
    svm_set_print_string_function([](const char*) {});
    AddDatabase("positive", Count(state) / 2, 1.0);
    AddDatabase("negative", Count(state) / 2, 2.0);
    auto classifier = std::make_unique<TVarClassifier>();
    classifier->SetName("classifier");
    classifier->SetClassifierType(type);
    store.Add(std::move(classifier));
    learn->SetVarList(&store);
    learn->SetClassifierList(&classifiers);
  }

  void Learn() { learn->ExecuteWithReturn(concept_, {"positive", "negative", "classifier"}); }

  const TClassifier& Classifier() { return *dynamic_cast<TVarClassifier*>(store.Find("classifier"))->GetClassifier(); }

 private:
  void AddDatabase(const char* name, int count, double level) {
    auto database = std::make_unique<TVarDatabase>();
    database->SetName(name);
    database->SetLocation(PictureDirectory(count, 0, 0));
    database->ScanDirectory();
    std::uniform_real_distribution<double> number(level, level + 0.1);
    for (const auto& image : database->GetImages()) {
      auto vector = std::make_unique<TFeatureVector>();
      vector->SetName("hsv");
      vector->SetLength(kVectorLength);
      for (int i = 0; i < kVectorLength; ++i) {
        vector->GetData()[i] = number(random) / (1.5 * kVectorLength);
      }
      image->GetSegments().push_back(std::make_unique<TImageSegmentRect>());
      image->GetSegments().back()->GetFeatures().Add(vector.release());
    }
    store.Add(std::move(database));
  }

  std::mt19937_64 random{3};
  TVarList store;
  TVarVisualConcept concept_;
  TClassifierList classifiers;
  const std::unique_ptr<TFunction> learn = MakeLearnVisualConcept();
};

void BM_GrowthLearn(benchmark::State& state, const char* type) {
  TLesson lesson(state, type);
  for (auto _ : state) {
    lesson.Learn();
  }
}

void BM_GrowthLearnSvmLibraryAlone(benchmark::State& state) {
  TLesson lesson(state, "svm");
  lesson.Learn();
  TProblem problem(lesson.Classifier());
  svm_model* model = nullptr;
  for (auto _ : state) {
    model = problem.Train();
  }
  state.counters["supportVectors"] = svm_get_nr_sv(model);
  svm_free_and_destroy_model(&model);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_GrowthUpdateFeature)->Apply(Sizes);
BENCHMARK(BM_GrowthSearchImage)->Apply(Sizes);
BENCHMARK(BM_GrowthLoadDatabase)->Apply(Sizes);
BENCHMARK(BM_GrowthLoadFeature)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_GrowthLearn, nearest, "nearest")->Apply(Sizes);
BENCHMARK_CAPTURE(BM_GrowthLearn, svm, "svm")->Apply(Sizes);
BENCHMARK(BM_GrowthLearnSvmLibraryAlone)->Apply(Sizes);

}  // namespace
