#include "classifiers/classifier.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "classifiers/classifier-list.h"
#include "classifiers/classifier-nearest-neighbor.h"
#include "classifiers/classifier-neural-network.h"
#include "classifiers/classifier-svm.h"
#include "tests/support/classifier-probes.h"
#include "tests/support/scratch-directory.h"

namespace {

/// Opens the scaling to the tests.
class TScalingProbe : public TClassifier {
 public:
  double Classify(const TFeatureVector& /*vector*/) const override { return 0.0; }
  using TClassifier::ComputeNormalization;
  using TClassifier::Normalize;
  using TClassifier::NormalizeExamples;
};

}  // namespace

TEST(TClassifier, ScalesEachDimensionByTheRangeOfAllExamples) {
  TScalingProbe probe;
  Teach(probe, {}, {{6, 5, 0, -3}});
  probe.ComputeNormalization();
  EXPECT_EQ(Stored(probe), Int(0)) << "without positive examples there is none";
  Teach(probe, {{2, 5, 0, -3}, {4, 5, 0, -1}}, {});
  probe.ComputeNormalization();
  probe.NormalizeExamples();
  // A constant dimension stays, zeros become -1, and below zero the largest value counts as (almost) 0.
  EXPECT_EQ(ValuesOf(*probe.GetPositiveExamples().GetItems()[0]), (TValues{-1, 5, -1, -1}));
  EXPECT_EQ(ValuesOf(*probe.GetPositiveExamples().GetItems()[1]), (TValues{0, 5, -1, 2 * 2.0 / 3 - 1}));
  EXPECT_EQ(ValuesOf(*probe.GetNegativeExamples().GetItems()[0]), (TValues{1, 5, -1, -1}));
  const auto query = Vector({8, 7, 0, -3});
  probe.Normalize(*query);
  EXPECT_EQ(ValuesOf(*query), (TValues{2, 7, -1, -1}));
  EXPECT_EQ(Stored(probe),
            Int(4) + Doubles({2, 5, 0, -3}) + Doubles({6, 5, 2.2250738585072014e-308, 2.2250738585072014e-308}));
}

TEST(TClassifier, LoadTakesAWholeBlockOrNothing) {
  TScalingProbe probe;
  const std::string sound = Int(2) + Doubles({1, -2}) + Doubles({3, 4});
  ASSERT_TRUE(Restore(probe, sound, "more"));
  EXPECT_EQ(Stored(probe), sound);
  const std::string hostile[] = {"",
                                 std::string("\1\0", 2),
                                 Int(3) + Doubles({1, 2, 3, 4, 5}),
                                 Int((1 << 24) + 1) + Doubles({1, 2}),
                                 Int(INT32_MAX) + Doubles({1, 2}),
                                 Int(-1) + Doubles({1, 2})};
  for (const std::string& bytes : hostile) {
    EXPECT_FALSE(Restore(probe, bytes));
    EXPECT_EQ(Stored(probe), sound);
  }
  // A block without a range puts the one before out of use.
  ASSERT_TRUE(Restore(probe, Int(0), "more"));
  const auto query = Vector({8, 8});
  probe.Normalize(*query);
  EXPECT_EQ(ValuesOf(*query), (TValues{8, 8}));
}

TEST(TClassifier, CopiesExamplesOrTakesTheCallersVectors) {
  TScalingProbe probe;
  const auto vector = Vector({1, 2});
  vector->SetName("lbp");
  probe.SetCopyExamples(false);
  probe.AddPositiveExample(vector.get());
  probe.AddPositiveExample(nullptr);
  ASSERT_EQ(probe.GetPositiveExamples().GetItems(), (TFeatureVectorList::TItems{vector.get()}));
  probe.Clear();
  probe.SetCopyExamples(true);
  probe.AddNegativeExample(vector.get());
  vector->GetData()[0] = 9;
  const auto& copies = probe.GetNegativeExamples().GetItems();
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_EQ(ValuesOf(*copies[0]), (TValues{1, 2}));
  EXPECT_EQ(copies[0]->GetName(), "lbp");
}

TEST(TClassifierList, MakesClassifiersWithTheirDefaults) {
  const std::pair<const char*, const char*> kinds[] = {
      {"knn", "none"},
      {"", "none"},
      {"nearest", "NearestNeighbor, 0, 0"},
      {"neural", "NeuralNetwork, 1, 1, hiddenlayers = 1, maxerror = 0.0000001, maxiterations = 1000"},
      {"svm", ", 1, 1, kernel = rbf"}};
  for (const auto& [type, expected] : kinds) {
    const auto classifier = TClassifierList().Create(type);
    std::string found = "none";
    if (classifier) {
      found = classifier->GetName() + (classifier->GetCopyExamples() ? ", 1" : ", 0") +
              (classifier->GetNormalize() ? ", 1" : ", 0");
      for (std::uint32_t i = 0; i < classifier->GetSettingCount(); ++i) {
        const std::string key = classifier->GetSettingName(i);
        found += ", " + key + " = " + classifier->GetSetting(key);
      }
      EXPECT_EQ(classifier->GetSettingName(classifier->GetSettingCount()), "");
      EXPECT_EQ(Answer(*classifier, {1, 2}), 0.0);
    }
    EXPECT_EQ(found, expected);
  }
}

TEST(TClassifier, TrainsOnlyOnExamplesThatItCanUse) {
  for (const char* type : {"neural", "svm"}) {
    SCOPED_TRACE(type);
    TClassifierList list;
    list.SetSeed(5);
    const auto classifier = list.Create(type);
    list.PrepareTraining(*classifier);
    const auto train = [&](const std::vector<TValues>& positives, const std::vector<TValues>& negatives) {
      Teach(*classifier, positives, negatives);
      classifier->Train();
    };
    train({}, {{1, 2}});
    EXPECT_EQ(Answer(*classifier, {1, 2}), 0.0);
    train(kPositives, {{3, 3}});
    EXPECT_GT(Answer(*classifier, {1, 1}), 0.0);
    EXPECT_EQ(Answer(*classifier, {1, 1, 1}), 0.0);
    const auto answers = AnswerBits(*classifier);
    train({}, {{1, 2, 3}});
    EXPECT_EQ(AnswerBits(*classifier), answers);
    classifier->Clear();
    train({kPositives[0], {1, 2, 3}}, {});
    EXPECT_EQ(AnswerBits(*classifier), answers);
    classifier->Clear();
    classifier->Train();
    EXPECT_EQ(AnswerBits(*classifier), answers);
    train({{}}, {{}});
    EXPECT_EQ(Answer(*classifier, {}), 0.0);
    EXPECT_EQ(Answer(*classifier, {1, 2}), 0.0);
  }
}

TEST(TClassifier, TemporaryFilesSpareWhatIsThereAndMayFail) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TClassifierNeuralNetwork neural;
  const std::pair<TClassifier*, const char*> cases[] = {{&svm, "svm-temp-"}, {&neural, "nn-temp-"}};
  for (const auto& [classifier, prefix] : cases) {
    Teach(*classifier, kPositives, kNegatives);
    classifier->Train();
  }
  for (const auto& [classifier, prefix] : cases) {
    // What stands under the next two numbers is a stranger's file and a link to nowhere.
    std::srand(42);
    const std::string file = prefix + std::to_string(std::rand()) + ".dat";
    const std::string link = prefix + std::to_string(std::rand()) + ".dat";
    MakeFile(file, "a stranger's");
    std::filesystem::create_symlink("nowhere", link);
    std::srand(42);
    const std::string bytes = Stored(*classifier);
    std::srand(42);
    EXPECT_TRUE(Restore(*classifier, bytes));
    EXPECT_EQ(FileBytes(file), "a stranger's");
    EXPECT_FALSE(std::filesystem::exists("nowhere"));
    EXPECT_EQ(CountFiles(), 2);
    std::filesystem::remove(file);
    std::filesystem::remove(link);
  }
  const std::string bytes = Stored(svm);
  const std::string networkBytes = Stored(neural);
  const auto answers = AnswerBits(svm);
  std::filesystem::remove_all(scratch.GetPath());
  EXPECT_FALSE(Restore(svm, bytes));
  EXPECT_EQ(AnswerBits(svm), answers);
  const auto networkAnswers = AnswerBits(neural);
  EXPECT_FALSE(Restore(neural, networkBytes));
  EXPECT_EQ(AnswerBits(neural), networkAnswers);
  for (const auto& [classifier, prefix] : cases) {
    const TFile file = BinaryFile();
    EXPECT_FALSE(classifier->Save(file.get())) << prefix;
  }
}

TEST(TClassifier, AFullDiskIsNoticedInEveryBlock) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TClassifierNeuralNetwork neural;
  TClassifierNearestNeighbor nearest;
  for (TClassifier* const classifier :
       {static_cast<TClassifier*>(&svm), static_cast<TClassifier*>(&neural), static_cast<TClassifier*>(&nearest)}) {
    Teach(*classifier, kPositives, kNegatives);
    classifier->Train();
    const std::size_t size = Stored(*classifier).size();
    std::vector<char> disk(size);
    // Each block of the beginning; what follows is one block of text, whose last byte counts.
    for (const std::size_t room : {std::size_t{1}, std::size_t{3}, std::size_t{4}, std::size_t{20}, std::size_t{36},
                                   std::size_t{52}, std::size_t{100}, size - 1, size}) {
      const TFile file(fmemopen(disk.data(), room, "wb"));
      std::setvbuf(file.get(), nullptr, _IONBF, 0);
      EXPECT_EQ(classifier->Save(file.get()), room == size) << classifier->GetName() << " in " << room;
    }
  }
}
