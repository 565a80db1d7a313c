#include "classifiers/network-output.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <doublefann.h>
#include <gtest/gtest.h>

namespace {

using TNetwork = std::unique_ptr<fann, decltype(&fann_destroy)>;

/// A network with random weights, activation functions and steepnesses, as one that was saved elsewhere may have.
TNetwork RandomNetwork(const std::vector<unsigned>& layers, std::mt19937& random) {
  TNetwork network(fann_create_standard_array(static_cast<unsigned>(layers.size()), layers.data()), &fann_destroy);
  std::normal_distribution<double> number;
  for (unsigned i = 0; i < network->total_connections; ++i) {
    network->weights[i] = std::ldexp(number(random), static_cast<int>(random() % 8) - 4);
  }
  for (fann_layer* layer = network->first_layer + 1; layer != network->last_layer; ++layer) {
    for (fann_neuron* neuron = layer->first_neuron; neuron + 1 != layer->last_neuron; ++neuron) {
      neuron->activation_function = static_cast<fann_activationfunc_enum>(random() % 18);
      neuron->activation_steepness = std::ldexp(number(random), static_cast<int>(random() % 6) - 3);
    }
  }
  return network;
}

void ExpectTheLibrarysOutput(fann& network, const TNetworkOutput& output, std::vector<double> inputs) {
  const double expected = *fann_run(&network, inputs.data());
  inputs.push_back(-7.0);
  const double found = output.Run(inputs.data());
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(found));
  } else {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(found), std::bit_cast<std::uint64_t>(expected));
  }
}

TEST(TNetworkOutput, EqualsTheLibrarysToTheLastBit) {
  std::mt19937 random(4);
  std::normal_distribution<double> number;
  for (const std::vector<unsigned>& layers :
       {std::vector<unsigned>{1, 1}, {2, 5, 1}, {7, 9, 3, 1}, {256, 5, 1}, {512, 5, 5, 5, 1}, {30, 17, 1}}) {
    for (int round = 0; round < 40; ++round) {
      SCOPED_TRACE(testing::Message() << layers.size() << " layers, " << layers[0] << " inputs, round " << round);
      const TNetwork network = RandomNetwork(layers, random);
      const TNetworkOutput output(*network);
      ASSERT_EQ(output.GetInputCount(), layers[0]);
      for (const double special :
           {0.0, 1e308, -1e308, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        std::vector<double> inputs(layers[0]);
        for (double& input : inputs) {
          input = number(random);
        }
        if (round % 4 == 0) {
          inputs[random() % inputs.size()] = special;
        }
        ExpectTheLibrarysOutput(*network, output, inputs);
      }
    }
  }
}

/// The network as the classifier makes it: nothing but the library's defaults.
TEST(TNetworkOutput, EqualsTheLibrarysOnNewNetworks) {
  const unsigned layers[] = {256, 5, 1};
  const TNetwork network(fann_create_standard_array(3, layers), &fann_destroy);
  fann_randomize_weights(network.get(), -1.0, 1.0);
  const TNetworkOutput output(*network);
  std::mt19937 random(5);
  for (int round = 0; round < 100; ++round) {
    std::vector<double> inputs(256);
    for (double& input : inputs) {
      input = static_cast<double>(random() % 2001) / 1000 - 1;
    }
    ExpectTheLibrarysOutput(*network, output, inputs);
  }
}

}  // namespace
