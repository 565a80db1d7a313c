#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "classifiers/classifier.h"

class TNetworkOutput;
struct fann;
struct fann_train_data;

/// The classifier "neural": a small feed-forward network of the FANN library on scaled examples, with hidden layers of
/// five neurons each and one output that is driven to 1 for positive and to 0 for negative examples. All other choices
/// are the library's defaults.
///
/// Settings: "hiddenlayers" (more than 32 count as 32, 0 and less as none), "maxiterations" (epochs), "maxerror" (mean
/// square error at which training stops). Text that is no number counts as 0.
class TClassifierNeuralNetwork : public TClassifier {
 public:
  TClassifierNeuralNetwork();
  ~TClassifierNeuralNetwork() override;

  /// Takes over scaling and network; examples and training set stay. Scaling is on afterwards if the file has a range.
  bool Load(std::FILE* file) override;

  /// Writes the block of TClassifier, then the bytes of the library's network file behind their 32-bit size, which is 0
  /// for an untrained classifier. The library needs a file of its own: "nn-temp-%d.dat" in the working directory, gone
  /// on return. False too if that cannot be made.
  bool Save(std::FILE* file) const override;

  /// Makes a new network from random weights; nothing of an earlier one carries over. Examples of length 0, or a lack
  /// of memory in the library, leave the classifier untrained. The library prints its table of connections to standard
  /// output.
  void Train() override;

  /// From -1 to 1; 0 if untrained.
  double Classify(const TFeatureVector& vector) const override;

  std::optional<double> GetTrainingError() const override {
    return network ? std::optional<double>(mse) : std::nullopt;
  }

  /// Whether training draws its weights from the seed instead of from the clock. With a fixed seed the same examples
  /// give the same network, bit for bit.
  bool GetFixedSeed() const { return fixedSeed; }
  void SetFixedSeed(bool flag) { fixedSeed = flag; }
  std::uint32_t GetSeed() const { return seed; }
  void SetSeed(std::uint32_t value) override {
    seed = value;
    fixedSeed = true;
  }

  /// Training overwrites these three from the settings.
  std::int32_t GetHiddenLayerCount() const { return hiddenLayerCount; }
  void SetHiddenLayerCount(std::int32_t count) { hiddenLayerCount = count; }
  std::int32_t GetMaxIterations() const { return maxIterations; }
  void SetMaxIterations(std::int32_t count) { maxIterations = count; }
  float GetMaxError() const { return maxError; }
  void SetMaxError(float error) { maxError = error; }

  /// The neurons of a hidden layer, from 0 to 31; behind them 0, and no effect. Training overwrites them.
  std::uint32_t GetHiddenLayerSize(std::uint32_t index) const;
  void SetHiddenLayerSize(std::uint32_t index, std::uint32_t size);

  /// The mean square error of the trained network over its training set.
  float GetMSE() const { return mse; }

 private:
  struct TDestroy {
    void operator()(fann* network) const;
    void operator()(fann_train_data* data) const;
  };

  static constexpr std::uint32_t kMaxHiddenLayers = 32;

  void ReadSettings();
  /// Copies all examples, positives first. Null if the library lacks the memory.
  std::unique_ptr<fann_train_data, TDestroy> CreateTrainingData() const;
  /// Fills layerSizes and returns the number of layers.
  std::uint32_t SetLayerSizes();

  std::unique_ptr<fann, TDestroy> network;
  /// Made of the network; null without one.
  std::unique_ptr<TNetworkOutput> output;
  std::unique_ptr<fann_train_data, TDestroy> trainingData;
  /// Neurons per layer: inputs, hidden layers, output.
  std::array<std::uint32_t, kMaxHiddenLayers + 2> layerSizes = {};
  bool fixedSeed = false;
  std::uint32_t seed = 0;
  std::int32_t hiddenLayerCount = 0;
  std::int32_t maxIterations = 100;
  float maxError = 0.001F;
  float mse = 0.0F;
};
