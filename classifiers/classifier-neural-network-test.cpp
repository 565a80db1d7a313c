#include "classifiers/classifier-neural-network.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <doublefann.h>
#include <gtest/gtest.h>

#include "classifiers/classifier-list.h"
#include "tests/support/classifier-probes.h"
#include "tests/support/scratch-directory.h"

namespace {

void TeachNeural(TClassifierNeuralNetwork& neural, std::uint32_t seed = 5) {
  neural.SetFixedSeed(true);
  neural.SetSeed(seed);
  Teach(neural, kPositives, kNegatives);
  neural.Train();
}

/// The network that the library makes of the same examples, scaled by hand, and of the same random numbers.
double BareNetworkAnswer(const TValues& query, unsigned seed, unsigned epochs) {
  const unsigned layers[] = {2, 5, 1};
  const std::unique_ptr<fann, decltype(&fann_destroy)> network(fann_create_standard_array(3, layers), &fann_destroy);
  const std::unique_ptr<fann_train_data, decltype(&fann_destroy_train)> data(fann_create_train(7, 2, 1),
                                                                             &fann_destroy_train);
  for (std::size_t row = 0; row < 7; ++row) {
    const TValues values = ScaledByHand(row < 3 ? kPositives[row] : kNegatives[row - 3]);
    std::copy(values.begin(), values.end(), data->input[row]);
    data->output[row][0] = row < 3 ? 1.0 : 0.0;
  }
  std::srand(seed);
  fann_randomize_weights(network.get(), -0.1, 0.1);
  fann_train_on_data(network.get(), data.get(), epochs, 0, 0.0000001F);
  TValues scaled = ScaledByHand(query);
  return 2 * *fann_run(network.get(), scaled.data()) - 1;
}

}  // namespace

TEST(TClassifierNeuralNetwork, IsTheLibrarysNetworkOnScaledExamples) {
  for (const unsigned epochs : {1000U, 0U}) {
    TClassifierNeuralNetwork neural;
    neural.SetSetting("maxiterations", epochs == 0 ? "abc" : "1000");
    TeachNeural(neural);
    for (const TValues& query : {TValues{1, 1}, TValues{3, 3}, TValues{2, 1.75}, TValues{-4, 9}}) {
      EXPECT_EQ(Answer(neural, query), BareNetworkAnswer(query, 5, epochs));
    }
    EXPECT_EQ(ValuesOf(*neural.GetPositiveExamples().GetItems()[0]), ScaledByHand(kPositives[0]));
  }
  TClassifierNeuralNetwork neural;
  TeachNeural(neural);
  EXPECT_GT(Answer(neural, {1, 1}), 0.5);
  EXPECT_LT(Answer(neural, {3, 3}), -0.5);
  double squares = 0;
  for (std::size_t row = 0; row < 7; ++row) {
    const double answer = (Answer(neural, row < 3 ? kPositives[row] : kNegatives[row - 3]) + 1) / 2;
    squares += std::pow(answer - (row < 3 ? 1 : 0), 2);
  }
  EXPECT_NEAR(neural.GetMSE(), squares / 7, 1e-6);
}

TEST(TClassifierNeuralNetwork, ASeedDecidesTheNetwork) {
  TClassifierNeuralNetwork first;
  TeachNeural(first);
  TClassifierNeuralNetwork second;
  TClassifierList list;
  list.PrepareTraining(second);
  EXPECT_FALSE(second.GetFixedSeed());
  list.SetSeed(5);
  list.PrepareTraining(second);
  Teach(second, kPositives, kNegatives);
  second.Train();
  EXPECT_EQ(AnswerBits(second), AnswerBits(first));
  TClassifierNeuralNetwork third;
  TeachNeural(third, 6);
  EXPECT_NE(AnswerBits(third), AnswerBits(first));
}

TEST(TClassifierNeuralNetwork, LayersFollowTheSetting) {
  const std::pair<const char*, int> cases[] = {{"1", 1}, {"3", 3}, {"0", 0}, {"-4", 0}, {"two", 0}, {"99", 32}};
  const TScratchDirectory scratch;
  for (const auto& [setting, count] : cases) {
    std::string expected = "layer_sizes=5 ";  // the library counts a bias neuron in every layer
    for (int i = 0; i < count; ++i) {
      expected += "6 ";
    }
    TClassifierNeuralNetwork neural;
    neural.SetSetting("hiddenlayers", setting);
    neural.SetSetting("maxiterations", "-1");
    neural.SetSetting("maxerror", "100");
    Teach(neural, {{1, 2, 3, 4}}, {{4, 3, 2, 1}});
    neural.Train();
    EXPECT_NE(Stored(neural).find(expected + "2 \n"), std::string::npos) << setting;
    EXPECT_EQ(neural.GetMaxIterations(), -1);
    EXPECT_EQ(neural.GetMaxError(), 100.0F);
  }
}

TEST(TClassifierNeuralNetwork, TrainingOverwritesTheSizesOfHiddenLayers) {
  TClassifierNeuralNetwork neural;
  for (std::uint32_t layer = 0; layer < 34; ++layer) {
    EXPECT_EQ(neural.GetHiddenLayerSize(layer), 0U);
    neural.SetHiddenLayerSize(layer, 100 + layer);
  }
  EXPECT_EQ(neural.GetHiddenLayerSize(0), 100U);
  EXPECT_EQ(neural.GetHiddenLayerSize(31), 131U);
  EXPECT_EQ(neural.GetHiddenLayerSize(32), 0U) << "behind the last";
  EXPECT_EQ(neural.GetHiddenLayerSize(UINT32_MAX), 0U);
  neural.SetSetting("hiddenlayers", "2");
  TeachNeural(neural);
  EXPECT_EQ(neural.GetHiddenLayerCount(), 2);
  EXPECT_EQ(neural.GetHiddenLayerSize(0), 5U);
  EXPECT_EQ(neural.GetHiddenLayerSize(1), 5U);
}

TEST(TClassifierNeuralNetwork, StoresScalingThenTheNetworkFile) {
  const TScratchDirectory scratch;
  TClassifierNeuralNetwork neural;
  EXPECT_EQ(Stored(neural), Int(0) + Int(0));
  TeachNeural(neural);
  const std::string bytes = Stored(neural);
  ASSERT_GT(bytes.size(), 40U);
  EXPECT_EQ(bytes, Int(2) + Doubles({0.5, 0.5, 3.5, 3.5}) + Counted(bytes.substr(40)));
  EXPECT_EQ(bytes.substr(40, 13), "FANN_FLO_2.1\n");
  EXPECT_EQ(CountFiles(), 0);

  TClassifierNeuralNetwork loaded;
  ASSERT_TRUE(Restore(loaded, bytes, "more"));
  EXPECT_EQ(AnswerBits(loaded), AnswerBits(neural));
  EXPECT_TRUE(loaded.GetNormalize());
  EXPECT_EQ(Stored(loaded), bytes);

  // Without a range the queries go to the network as they are.
  ASSERT_TRUE(Restore(loaded, Int(0) + bytes.substr(36)));
  EXPECT_FALSE(loaded.GetNormalize());
  EXPECT_EQ(Answer(loaded, ScaledByHand({1, 2})), Answer(neural, {1, 2}));
  ASSERT_TRUE(Restore(loaded, Int(0) + Int(0)));
  EXPECT_EQ(Answer(loaded, {1, 2}), 0.0);
}

TEST(TClassifierNeuralNetwork, ADamagedFileLeavesTheNetwork) {
  const TScratchDirectory scratch;
  TClassifierNeuralNetwork neural;
  TeachNeural(neural);
  const std::string sound = Stored(neural);
  const auto answers = AnswerBits(neural);
  const std::string head = sound.substr(0, 36);
  const std::string text = sound.substr(40);
  ExpectToRefuseEdits(neural, head, text,
                      {"num_layers=3 > num_layers=300000000", "num_layers=3 > num_layers=0",
                       "num_layers=3 > num_layers=2", "layer_sizes=3 6 2 > layer_sizes=0 6 2",
                       "layer_sizes=3 6 2 > layer_sizes=4294967295 6 2", "layer_sizes=3 6 2 > layer_sizes=3 7 2",
                       "(3, 4, 5.0 > (9, 4, 5.0", "(3, 4, 5.0 > (3, 99, 5.0", "weight)=(0,  > weight)=(77, ",
                       "functions_count=10 > functions_count=4000000000", "network_type=0 > network_type=1",
                       "scale_included=0 > scale_included=1", "connection_rate=1.0 > connection_rate=0.5",
                       "learning_rate=0.7 > learning_rate=nan", "FANN_FLO_2.1 > FANN_FIX_2.0"});
  EXPECT_FALSE(Restore(neural, head + Int(-1) + text));
  EXPECT_FALSE(Restore(neural, Int(1) + Doubles({0, 1}) + sound.substr(36)));
  EXPECT_EQ(AnswerBits(neural), answers);
  ExpectToSurviveDamage(neural, sound);
}
