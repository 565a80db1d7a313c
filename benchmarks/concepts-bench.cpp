// learnvisualconcept and findvisualconceptlocations beside the bare calls of the libraries below the classifiers, and
// beside what is left of the command if the vectors of all segments are at hand.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <doublefann.h>
#include <fcntl.h>
#include <svm.h>
#include <unistd.h>

#include "benchmarks/bench-data.h"
#include "benchmarks/svm-problem.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "concepts/commands.h"
#include "concepts/var-visual-concept.h"
#include "engine/function.h"
#include "features/commands.h"
#include "features/feature-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "segmentation/commands.h"

namespace {

constexpr int kPhotos = 10;

/// The databases "positive" and "negative" of photographs cut by the grid, with one feature or both on every segment,
/// and the concept "concept" that the classifier "classifier" has learned from them.
class TLesson {
 public:
  TLesson(int length, const std::string& theType) : type(theType) {
    svm_set_print_string_function([](const char*) {});
    // The same network in every run.
    classifiers.SetSeed(1);
    AddDatabase("positive", 1, kPhotos, length);
    AddDatabase("negative", 1 + kPhotos, 2 * kPhotos, length);
    auto classifier = std::make_unique<TVarClassifier>();
    classifier->SetName("classifier");
    store.Add(std::move(classifier));
    auto concept_ = std::make_unique<TVarVisualConcept>();
    concept_->SetName("concept");
    store.Add(std::move(concept_));
    learn->SetVarList(&store);
    learn->SetClassifierList(&classifiers);
    Forget();
    Learn();
  }

  TVarClassifier& Classifier() { return *dynamic_cast<TVarClassifier*>(store.Find("classifier")); }

  void Forget() { Classifier().SetClassifierType(type); }

  void Learn() {
    // FANN prints its connections, which would stand among the tables.
    std::fflush(stdout);
    const int output = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    learn->ExecuteWithReturn(*store.Find("concept"), {"positive", "negative", "classifier"});
    std::fflush(stdout);
    dup2(output, STDOUT_FILENO);
    close(nowhere);
    close(output);
  }

  const TVarVisualConcept& Concept() const { return *dynamic_cast<const TVarVisualConcept*>(store.Find("concept")); }

  const TVarDatabase& Database(const char* name) const { return *dynamic_cast<const TVarDatabase*>(store.Find(name)); }

  /// The photographs from `first` to `last` with the concept's features on every segment.
  void AddDatabase(const char* name, int first, int last, int length) {
    auto database = std::make_unique<TVarDatabase>();
    database->SetName(name);
    database->SetLocation(SampleDirectory(first, last));
    database->ScanDirectory();
    store.Add(std::move(database));
    const TFeatureList features;
    const auto segment = MakeSegmentImage();
    segment->SetVarList(&store);
    segment->Execute({name, Quoted("grid")});
    const auto update = MakeUpdateFeature();
    update->SetVarList(&store);
    update->SetFeatureList(&features);
    update->Execute({name, Quoted("hsv")});
    if (length > kVectorLength) {
      update->Execute({name, Quoted("lbp")});
    }
  }

  TVarList store;

 private:
  const std::string type;
  TClassifierList classifiers;
  const std::unique_ptr<TFunction> learn = MakeLearnVisualConcept();
};

TLesson& Lesson(const benchmark::State& state) {
  static TLesson one(kVectorLength, "svm");
  static TLesson two(2 * kVectorLength, "svm");
  return state.range(0) == kVectorLength ? one : two;
}

TLesson& NeuralLesson() {
  static TLesson lesson(kVectorLength, "neural");
  return lesson;
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
  const auto find = MakeFindVisualConceptLocations();
  find->SetVarList(&Lesson(state).store);
  for (auto _ : state) {
    find->Execute({"positive", "concept", Quoted("here")});
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

void BM_NeuralLocate(benchmark::State& state) {
  const auto find = MakeFindVisualConceptLocations();
  find->SetVarList(&NeuralLesson().store);
  for (auto _ : state) {
    find->Execute({"positive", "concept", Quoted("here")});
  }
}

/// A network as the classifier makes it, run on the examples, which training has scaled.
void BM_NeuralLocateLibraryAlone(benchmark::State& state) {
  const unsigned layers[] = {kVectorLength, 5, 1};
  const std::unique_ptr<fann, decltype(&fann_destroy)> network(fann_create_standard_array(3, layers), &fann_destroy);
  const auto& rows = NeuralLesson().Classifier().GetClassifier()->GetPositiveExamples().GetItems();
  for (auto _ : state) {
    for (TFeatureVector* row : rows) {
      benchmark::DoNotOptimize(fann_run(network.get(), row->GetData()));
    }
  }
  state.counters["rows"] = static_cast<double>(rows.size());
}

constexpr int kManyImages = 1000;

/// A concept of both features, and the database "many": as many images, each with the segments of one of the other
/// sample photographs in turn.
TLesson& LessonOfMany(const std::string& type) {
  static std::map<std::string, std::unique_ptr<TLesson>> lessons;
  auto& lesson = lessons[type];
  if (!lesson) {
    lesson = std::make_unique<TLesson>(2 * kVectorLength, type);
    lesson->AddDatabase("others", 2 * kPhotos + 1, 110, 2 * kVectorLength);
    const auto& others = lesson->Database("others").GetImages();
    auto many = std::make_unique<TVarDatabase>();
    many->SetName("many");
    many->SetLocation(PictureDirectory(kManyImages, 0, 0));
    many->ScanDirectory();
    for (std::size_t i = 0; i < many->GetImages().size(); ++i) {
      CopySegments(many->GetImages()[i]->GetSegments(), others[i % others.size()]->GetSegments());
    }
    lesson->store.Add(std::move(many));
  }
  return *lesson;
}

void BM_LocateMany(benchmark::State& state, const char* type) {
  TLesson& lesson = LessonOfMany(type);
  const auto find = MakeFindVisualConceptLocations();
  find->SetVarList(&lesson.store);
  for (auto _ : state) {
    find->Execute({"many", "concept", Quoted("here")});
  }
}

void BM_LocateManyClassifyAlone(benchmark::State& state, const char* type) {
  TLesson& lesson = LessonOfMany(type);
  const TClassifier& classifier = *lesson.Classifier().GetClassifier();
  std::vector<std::unique_ptr<TFeatureVector>> vectors;
  for (const auto& image : lesson.Database("others").GetImages()) {
    for (const auto& segment : image->GetSegments()) {
      vectors.push_back(std::make_unique<TFeatureVector>());
      lesson.Concept().GetVectors().Combine(*segment, *vectors.back());
    }
  }
  const std::size_t segments = 64 * std::size_t{kManyImages};
  for (auto _ : state) {
    for (std::size_t i = 0; i < segments; ++i) {
      benchmark::DoNotOptimize(classifier.Classify(*vectors[i % vectors.size()]));
    }
  }
}

/// Finds nothing.
class TNoClassifier : public TClassifier {
 public:
  double Classify(const TFeatureVector& vector) const override {
    benchmark::DoNotOptimize(vector.GetData());
    benchmark::ClobberMemory();
    return 0.0;
  }
};

/// The part of the command that is not classifying.
void BM_Gather(benchmark::State& state) {
  TLesson& lesson = LessonOfMany("nearest");
  const TNoClassifier classifier;
  for (auto _ : state) {
    for (const auto& image : lesson.Database("many").GetImages()) {
      lesson.Concept().Locate(classifier, "here", *image);
    }
  }
}

/// The same numbers to the same place, from where they are known to lie.
void BM_GatherPlainCopy(benchmark::State& state) {
  TLesson& lesson = LessonOfMany("nearest");
  std::vector<const double*> parts;
  for (const auto& image : lesson.Database("many").GetImages()) {
    for (const auto& segment : image->GetSegments()) {
      for (const TFeatureVector* vector : segment->GetFeatures().GetItems()) {
        parts.push_back(vector->GetData());
      }
    }
  }
  std::vector<double> combined(2 * kVectorLength);
  for (auto _ : state) {
    for (std::size_t i = 0; i < parts.size(); i += 2) {
      std::copy_n(parts[i], kVectorLength, combined.data());
      std::copy_n(parts[i + 1], kVectorLength, combined.data() + kVectorLength);
      benchmark::DoNotOptimize(combined.data());
      benchmark::ClobberMemory();
    }
  }
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
BENCHMARK(BM_NeuralLocate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NeuralLocateLibraryAlone)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LocateMany, nearest, "nearest")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LocateMany, neural, "neural")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LocateMany, svm, "svm")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LocateManyClassifyAlone, nearest, "nearest")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LocateManyClassifyAlone, neural, "neural")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LocateManyClassifyAlone, svm, "svm")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Gather)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GatherPlainCopy)->Unit(benchmark::kMillisecond);

}  // namespace
