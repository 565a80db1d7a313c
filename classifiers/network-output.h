#pragma once

#include <cstdint>
#include <vector>

#include "kernels/packed-rows.h"

struct fann;

/// What a network of the FANN library answers: the output of its fann_run to the last bit, in a fraction of the time,
/// over a copy of the weights in which several neurons lie abreast. The library sums up one neuron at a time, over
/// inputs that it copies into its neurons first.
class TNetworkOutput {
 public:
  /// For a network whose layers are fully connected, each with the one before, and that has one output. The network may
  /// go.
  explicit TNetworkOutput(const fann& network);

  std::uint32_t GetInputCount() const { return inputCount; }

  /// Turns the inputs into the output. `inputs` has room for one more number, which is overwritten.
  double Run(double* inputs) const;

 private:
  /// Neurons with the same inputs: those of the layer before and a 1, whose weight is the bias.
  struct TLayer {
    kernels::TPackedRows weights;
    /// For each neuron, the library's number of its activation function and the factor of its sum.
    std::vector<int> functions;
    std::vector<double> steepnesses;
  };

  void RunLayer(const TLayer& layer, const double* inputs, double* outputs) const;

  std::uint32_t inputCount;
  std::vector<TLayer> layers;
  /// The numbers that the widest layer puts out, those of unused lanes and the 1 included.
  std::size_t widest = 0;
};
