#include "classifiers/network-output.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include <doublefann.h>
#include <fann_activation.h>

namespace {

/// The library does not let a sum saturate its functions further than this.
constexpr double kLargestSum = 150;

double Activate(int function, double steepness, double sum) {
  // The library's macro calls these by their bare names.
  using std::cos;
  using std::exp;
  using std::sin;
  // The sum is multiplied by the steepness and the limit is divided by it. That is how fann_run does it, and equal bits
  // are the aim.
  const double limit = kLargestSum / steepness;
  sum *= steepness;
  if (sum > limit) {
    sum = limit;
  } else if (sum < -limit) {
    sum = -limit;
  }
  double result = 0.0;
  fann_activation_switch(function, sum, result);
  return result;
}

}  // namespace

TNetworkOutput::TNetworkOutput(const fann& network) : inputCount(network.num_input) {
  for (const fann_layer* layer = network.first_layer + 1; layer != network.last_layer; ++layer) {
    // The last neuron of each layer is the 1 for the next.
    const auto count = static_cast<std::size_t>(layer->last_neuron - layer->first_neuron) - 1;
    const auto inputs = static_cast<std::size_t>(layer[-1].last_neuron - layer[-1].first_neuron);
    TLayer copy{kernels::TPackedRows(count, inputs), {}, {}};
    for (std::size_t row = 0; row < count; ++row) {
      const fann_neuron& neuron = layer->first_neuron[row];
      for (std::size_t i = 0; i < inputs; ++i) {
        copy.weights.Set(row, i, network.weights[neuron.first_con + i]);
      }
      copy.functions.push_back(neuron.activation_function);
      // The library packs its neurons: no reference may point into them.
      const double steepness = neuron.activation_steepness;
      copy.steepnesses.push_back(steepness);
    }
    widest = std::max(widest, copy.weights.RoundedCount() + 1);
    layers.push_back(std::move(copy));
  }
}

double TNetworkOutput::Run(double* inputs) const {
  // The bias is a weight like any other, of an input that is always 1.
  inputs[inputCount] = 1;
  const auto numbers = std::make_unique_for_overwrite<double[]>(2 * widest);
  double* outputs = numbers.get();
  double* next = outputs + widest;
  for (const TLayer& layer : layers) {
    RunLayer(layer, inputs, outputs);
    // Two buffers that take turns: the outputs of a layer are the inputs of the next.
    inputs = outputs;
    std::swap(outputs, next);
  }
  return inputs[0];
}

void TNetworkOutput::RunLayer(const TLayer& layer, const double* inputs, double* outputs) const {
  layer.weights.DotProductsByFours(inputs, outputs);
  const std::size_t count = layer.weights.GetCount();
  for (std::size_t i = 0; i < count; ++i) {
    outputs[i] = Activate(layer.functions[i], layer.steepnesses[i], outputs[i]);
  }
  outputs[count] = 1;
}
