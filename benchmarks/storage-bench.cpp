// Stored features, annotations and evaluation: savefeature and loadfeature over 100,000 images beside a plain loop over
// the same files, loadmirflickrtags, and the curve of a ranking beside writing the same bytes.

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "base/file.h"
#include "benchmarks/bench-data.h"
#include "engine/function.h"
#include "features/commands.h"
#include "features/feature-list.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/commands.h"
#include "retrieval/recall-precision-text.h"

namespace {

constexpr const char* kStorage = "FeatureStorage";
constexpr int kRankCount = 1000000;
constexpr int kTagCount = 25000;
using TBytes = std::array<char, kVectorLength * sizeof(double)>;

/// The files that the commands use, in their order.
const std::vector<std::string>& StoredFiles() {
  static std::vector<std::string> files;
  for (int i = static_cast<int>(files.size()) + 1; i <= kCollectionSize; ++i) {
    files.push_back(std::string(kStorage) + "/hsv-im" + std::to_string(i) + ".dat");
  }
  return files;
}

bool IsStored() {
  return std::filesystem::exists(StoredFiles().front()) && std::filesystem::exists(StoredFiles().back());
}

bool SaveCollection() {
  const auto save = MakeSaveFeature();
  save->SetVarList(&Collection().store);
  return save->Execute({"db", Quoted("hsv")});
}

bool SavePlainly() {
  const auto* database = dynamic_cast<const TVarDatabase*>(Collection().store.Find("db"));
  bool succeeds = true;
  for (std::size_t i = 0; i < StoredFiles().size(); ++i) {
    const TFeatureVector* vector = database->GetImages()[i]->GetImageSegment().GetFeatures().GetItems().front();
    const int file = open(StoredFiles()[i].c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    succeeds &= write(file, vector->GetData(), sizeof(TBytes)) == static_cast<ssize_t>(sizeof(TBytes));
    close(file);
  }
  return succeeds;
}

/// As the command does it: no file is ever half of one and half of the other.
bool SaveBeside() {
  const auto* database = dynamic_cast<const TVarDatabase*>(Collection().store.Find("db"));
  const std::string beside = std::string(kStorage) + "/beside";
  bool succeeds = true;
  for (std::size_t i = 0; i < StoredFiles().size(); ++i) {
    const TFeatureVector* vector = database->GetImages()[i]->GetImageSegment().GetFeatures().GetItems().front();
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    succeeds &= write(file, vector->GetData(), sizeof(TBytes)) == static_cast<ssize_t>(sizeof(TBytes));
    close(file);
    succeeds &= std::rename(beside.c_str(), StoredFiles()[i].c_str()) == 0;
  }
  return succeeds;
}

bool LoadPlainly() {
  TBytes bytes;
  bool succeeds = true;
  for (const std::string& name : StoredFiles()) {
    const int file = open(name.c_str(), O_RDONLY);
    succeeds &= read(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    close(file);
    benchmark::DoNotOptimize(bytes);
  }
  return succeeds;
}

/// Keeps each vector in a block of its own, and lets the window draw itself after each, as the command must.
bool LoadAndKeep(std::vector<std::unique_ptr<double[]>>& vectors) {
  bool succeeds = true;
  for (const std::string& name : StoredFiles()) {
    vectors.push_back(std::make_unique_for_overwrite<double[]>(kVectorLength));
    const int file = open(name.c_str(), O_RDONLY);
    succeeds &= read(file, vectors.back().get(), sizeof(TBytes)) == static_cast<ssize_t>(sizeof(TBytes));
    close(file);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
  return succeeds;
}

/// The commands' files are all there, or none is, and the disk has nothing left to do.
void PrepareFiles(bool exist) {
  EnterWorkDirectory();
  if (!exist) {
    std::filesystem::remove_all(kStorage);
  }
  std::filesystem::create_directories(kStorage);
  if (exist && !IsStored()) {
    SaveCollection();
  }
  sync();
}

template <auto TSave, bool TExist>
void BM_Save(benchmark::State& state) {
  Collection();
  for (auto _ : state) {
    state.PauseTiming();
    PrepareFiles(TExist);
    state.ResumeTiming();
    if (!TSave()) {
      state.SkipWithError("Nothing saved.");
    }
  }
}

void BM_LoadFeaturePlainLoop(benchmark::State& state) {
  PrepareFiles(true);
  for (auto _ : state) {
    if (!LoadPlainly()) {
      state.SkipWithError("Nothing loaded.");
    }
  }
}

void BM_LoadFeaturePlainLoopLikewise(benchmark::State& state) {
  PrepareFiles(true);
  for (auto _ : state) {
    std::vector<std::unique_ptr<double[]>> vectors;
    if (!LoadAndKeep(vectors)) {
      state.SkipWithError("Nothing loaded.");
    }
    state.PauseTiming();
    vectors.clear();
    state.ResumeTiming();
  }
}

void BM_LoadFeature(benchmark::State& state) {
  PrepareFiles(true);
  const TFeatureList features;
  for (auto _ : state) {
    state.PauseTiming();
    const auto store = DatabaseStore(PictureDirectory(kCollectionSize, 0, 0));
    const auto load = MakeLoadFeature();
    load->SetVarList(store.get());
    load->SetFeatureList(&features);
    state.ResumeTiming();
    load->Execute({"db", Quoted("hsv")});
    state.PauseTiming();
    const auto* database = dynamic_cast<const TVarDatabase*>(store->Find("db"));
    if (database->GetImages().back()->GetImageSegment().GetFeatures().Find("hsv") == nullptr) {
      state.SkipWithError("Nothing loaded.");
    }
    state.ResumeTiming();
  }
}

/// What loadfeature does between files, so often.
void BM_LoadFeatureProcessEventsAlone(benchmark::State& state) {
  for (auto _ : state) {
    for (int i = 0; i < kCollectionSize; ++i) {
      QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
  }
}

void BM_LoadTags(benchmark::State& state) {
  EnterWorkDirectory();
  std::ofstream annotations("tree.txt", std::ios::binary);
  for (int i = 1; i <= kTagCount; ++i) {
    annotations << i << "\r\n";
  }
  annotations.close();
  const auto store = DatabaseStore(PictureDirectory(kCollectionSize, 0, 0));
  const auto& images = dynamic_cast<const TVarDatabase*>(store->Find("db"))->GetImages();
  const auto load = MakeLoadMirFlickrTags();
  load->SetVarList(store.get());
  for (auto _ : state) {
    load->Execute({"db", Quoted("tree.txt")});
    state.PauseTiming();
    if (!images[kTagCount - 1]->HasTag("tree")) {
      state.SkipWithError("Nothing loaded.");
    }
    for (int i = 0; i < kTagCount; ++i) {
      std::vector<std::string>().swap(images[static_cast<std::size_t>(i)]->GetTags());
    }
    state.ResumeTiming();
  }
}

/// Every tenth rank is relevant.
std::vector<bool> Relevance() {
  std::vector<bool> relevance(kRankCount);
  for (std::size_t i = 0; i < relevance.size(); i += 10) {
    relevance[i] = true;
  }
  return relevance;
}

void BM_MeasureAndWrite(benchmark::State& state) {
  EnterWorkDirectory();
  const std::vector<bool> relevance = Relevance();
  for (auto _ : state) {
    const std::string curve = FormatCurve(MeasureRanking(relevance, kRankCount / 10).curve);
    base::ReplaceFile("recallprecision.txt", curve.data(), curve.size());
  }
}

void BM_MeasureAndWriteWriteAlone(benchmark::State& state) {
  EnterWorkDirectory();
  const std::string curve = FormatCurve(MeasureRanking(Relevance(), kRankCount / 10).curve);
  for (auto _ : state) {
    base::ReplaceFile("recallprecision.txt", curve.data(), curve.size());
  }
}

BENCHMARK(BM_Save<SaveCollection, false>)->Name("BM_SaveFeatureFirst")->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save<SavePlainly, false>)
    ->Name("BM_SaveFeatureFirstPlainLoop")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save<SaveBeside, false>)
    ->Name("BM_SaveFeatureFirstPlainLoopBeside")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save<SaveCollection, true>)->Name("BM_SaveFeatureAgain")->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save<SavePlainly, true>)
    ->Name("BM_SaveFeatureAgainPlainLoop")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save<SaveBeside, true>)
    ->Name("BM_SaveFeatureAgainPlainLoopBeside")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadFeature)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadFeaturePlainLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadFeaturePlainLoopLikewise)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadFeatureProcessEventsAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadTags)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MeasureAndWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MeasureAndWriteWriteAlone)->Unit(benchmark::kMillisecond);

}  // namespace
