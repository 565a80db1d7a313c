#include "classifiers/classifier-svm.h"

#include <cmath>
#include <cstdlib>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <svm.h>

#include "tests/support/classifier-probes.h"
#include "tests/support/scratch-directory.h"

namespace {

std::string Record(std::int32_t kernel, double gamma) {
  return Int(0) + Int(kernel) + Int(3) + Int(0) + Doubles({gamma, 0, 100, 0.001, 32768}) + Int(0) + Int(0) + Int(0) +
         Int(0) + Doubles({0.5, 0.1}) + Int(1) + Int(0);
}

void TeachSVM(TClassifierSVM& svm) {
  Teach(svm, kPositives, kNegatives);
  svm.Train();
}

/// The record in the stored bytes of a classifier of that dimension.
std::string StoredRecord(const TClassifierSVM& svm, std::size_t dimension) {
  return Stored(svm).substr(4 + 16 * dimension, 96);
}

}  // namespace

TEST(TClassifierSVM, ScoresByTheDecisionValueTowardsThePositives) {
  TClassifierSVM svm;
  EXPECT_EQ(svm.Score(*Vector({1.0})), 0.0);
  svm.SetSetting("kernel", "linear");
  // Scaled: 1 and 0.5 against -1 and -0.5. The margin lies at the inner ones, so that the value is twice the scaled
  // one.
  Teach(svm, {{4.0}, {3.0}}, {{0.0}, {1.0}});
  svm.Train();
  for (const auto& [value, expected] : {std::pair{3.0, 1.0}, {1.0, -1.0}, {2.0, 0.0}, {4.0, 2.0}, {-2.0, -4.0}}) {
    EXPECT_NEAR(svm.Score(*Vector({value})), expected, 0.01) << value;
  }
  EXPECT_EQ(svm.Score(*Vector({1.0, 2.0})), 0.0);
}

TEST(TClassifierSVM, IsTheLibrarysMachineOnScaledExamples) {
  for (const char* kernel : {"rbf", "linear", "poly", "sigmoid"}) {
    TClassifierSVM svm;
    svm.SetSetting("kernel", kernel);
    TeachSVM(svm);
    svm_parameter parameter = {};
    parameter.kernel_type = kernel == std::string("linear") ? LINEAR : kernel == std::string("poly") ? POLY : RBF;
    parameter.degree = 3;
    parameter.gamma = 0.5;  // 1 / length
    parameter.cache_size = 100;
    parameter.eps = 0.001;
    parameter.C = 32768;
    parameter.shrinking = 1;
    std::vector<std::vector<svm_node>> rows;
    std::vector<svm_node*> pointers;
    const auto addRow = [&](const TValues& values) {
      const TValues scaled = ScaledByHand(values);
      rows.push_back({{0, scaled[0]}, {1, scaled[1]}, {-1, 0}});
      pointers.push_back(rows.back().data());
    };
    std::for_each(kPositives.begin(), kPositives.end(), addRow);
    std::for_each(kNegatives.begin(), kNegatives.end(), addRow);
    TValues labels = {1, 1, 1, -1, -1, -1, -1};
    const svm_problem problem = {7, labels.data(), pointers.data()};
    svm_model* model = svm_train(&problem, &parameter);
    TValues expected;
    TValues answers;
    for (int i = 0; i < 24 * 24; ++i) {
      const TValues query = {i % 24 * 0.25 - 1, std::floor(i / 24.0) * 0.25 - 1};
      addRow(query);
      expected.push_back(svm_predict(model, pointers.back()));
      answers.push_back(Answer(svm, query));
    }
    EXPECT_EQ(answers, expected) << kernel;
    EXPECT_LT(std::abs(std::reduce(expected.begin(), expected.end())), 24 * 24 - 100) << "both classes are there";
    svm_free_and_destroy_model(&model);
  }
}

TEST(TClassifierSVM, GammaFollowsTheKernelOfTheTrainingBefore) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  EXPECT_EQ(Stored(svm), Int(0) + Record(2, 0.5) + Int(0));
  svm.SetSetting("kernel", "linear");
  TValues zeros(64);
  TValues ones(64, 1.0);
  Teach(svm, {zeros}, {ones});
  svm.Train();
  EXPECT_EQ(StoredRecord(svm, 64), Record(0, 0.015625));
  // A linear machine with a gamma of its own keeps it in its next training, and the one after that sets it anew.
  ASSERT_TRUE(Restore(svm, Int(0) + Record(0, 7.0) + Int(0)));
  EXPECT_EQ(Answer(svm, zeros), 0.0);
  svm.SetNormalize(true);
  svm.SetSetting("kernel", "sigmoid");
  svm.Train();
  EXPECT_EQ(StoredRecord(svm, 64), Record(2, 7.0));
  svm.SetSetting("kernel", "poly");
  svm.Train();
  EXPECT_EQ(StoredRecord(svm, 64), Record(1, 0.015625));
}

TEST(TClassifierSVM, EqualExamplesOfBothClassesGetSomeAnswer) {
  TClassifierSVM svm;
  Teach(svm, {{1, 1}, {1, 1}}, {{1, 1}});
  svm.Train();
  EXPECT_EQ(std::fabs(Answer(svm, {1, 1})), 1.0);
}

TEST(TClassifierSVM, StoresScalingParametersAndTheModelFile) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  Teach(svm, {{0, 5, 1}}, {{2, 5, 0}});
  svm.Train();
  const std::string bytes = Stored(svm);
  ASSERT_GT(bytes.size(), 152U);
  const std::string text = bytes.substr(152);
  EXPECT_EQ(bytes, Int(3) + Doubles({0, 5, 0, 2, 5, 1}) + Record(2, 1.0 / 3) + Counted(text));
  // Elements count from 0, and the constant one is there as well.
  EXPECT_NE(text.find(" 0:-1 1:5 2:1 \n"), std::string::npos) << text;
  EXPECT_EQ(CountFiles(), 0);
}

TEST(TClassifierSVM, LoadsOverATrainedMachineAndTrainsOverALoadedOne) {
  const TScratchDirectory scratch;
  for (const char* kernel : {"rbf", "linear", "poly"}) {
    TClassifierSVM svm;
    svm.SetSetting("kernel", kernel);
    TeachSVM(svm);
    const std::string bytes = Stored(svm);
    TClassifierSVM other;
    Teach(other, {{1, 0}, {5, 5}}, {{0, 1}});
    other.Train();
    ASSERT_TRUE(Restore(other, bytes, "more"));
    EXPECT_EQ(AnswerBits(other), AnswerBits(svm));
    ASSERT_TRUE(Restore(other, bytes));
    other.Clear();
    Teach(other, kNegatives, kPositives);
    other.Train();
    EXPECT_EQ(Answer(other, {1, 1}), -1.0);
    EXPECT_EQ(Answer(other, {3, 3}), 1.0);
  }
  // A machine that knows one class only.
  TClassifierSVM one;
  Teach(one, kPositives, {});
  one.Train();
  TClassifierSVM loaded;
  ASSERT_TRUE(Restore(loaded, Stored(one)));
  EXPECT_EQ(Answer(loaded, {9, 9}), 1.0);
}

TEST(TClassifierSVM, ReadsTextWithTheLineEndsOfOtherPlatforms) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TeachSVM(svm);
  const std::string bytes = Stored(svm);
  std::string text;
  for (const char character : bytes.substr(136)) {
    text += character == '\n' ? "\r\n" : std::string(1, character);
  }
  TClassifierSVM loaded;
  ASSERT_TRUE(Restore(loaded, bytes.substr(0, 132) + Counted(text)));
  EXPECT_EQ(AnswerBits(loaded), AnswerBits(svm));
}

TEST(TClassifierSVM, ADamagedFileLeavesTheMachine) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TeachSVM(svm);
  const std::string sound = Stored(svm);
  const auto answers = AnswerBits(svm);
  const std::string head = sound.substr(0, 132);
  const std::string text = sound.substr(136);
  ExpectToRefuseEdits(
      svm, head, text,
      {"nr_class 2 > nr_class 2000000000", "nr_class 2\n > ", "total_sv  > total_sv 9", "nr_sv  > nr_sv 1",
       "rbf > sigmoid", "rbf > precomputed", "c_svc > epsilon_svr", "label 1 -1 > label 1 1", "label 1 -1 > label 1 -2",
       "gamma 0.5 > gamma nan", " 0: >  7:", " 1: >  -1:", " 1: >  1", text.substr(text.find("SV\n")) + " > SV\n"});
  const std::string range = sound.substr(0, 36);
  // The record asks for weights behind a pointer, for precomputed kernels, for another kernel than the model's.
  for (const std::string& record : {Replaced(Record(2, 0.5), Doubles({32768}) + Int(0), Doubles({32768}) + Int(2)),
                                    Record(4, 0.5), Record(0, 0.5), Record(2, -1.0), Record(2, NAN)}) {
    EXPECT_FALSE(Restore(svm, range + record + sound.substr(132)));
  }
  EXPECT_FALSE(Restore(svm, Int(1) + Doubles({0, 1}) + sound.substr(36)));
  EXPECT_EQ(AnswerBits(svm), answers);
  ExpectToSurviveDamage(svm, sound);
}
