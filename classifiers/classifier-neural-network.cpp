#include "classifiers/classifier-neural-network.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <doublefann.h>

#include "classifiers/model-storage.h"
#include "classifiers/network-output.h"
#include "classifiers/network-text.h"

namespace {

constexpr const char* kTemporaryPrefix = "nn-temp-";
// Of each hidden layer, whatever the length of the vectors.
constexpr std::uint32_t kHiddenNeurons = 5;
/// The library's own range of weights in a new network.
constexpr fann_type kLargestWeight = 0.1;

/// What atoi does, and defined for numbers of any size.
std::int32_t ToInteger(const std::string& text) {
  return static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

/// Gives the values of a list the target; returns the number of the row behind the last.
std::uint32_t FillRows(fann_train_data& data, const TFeatureVectorList& list, fann_type target, std::uint32_t row) {
  for (const TFeatureVector* example : list.GetItems()) {
    std::copy_n(example->GetData(), data.num_input, data.input[row]);
    data.output[row][0] = target;
    ++row;
  }
  return row;
}

/// Called by the library behind each epoch of a training that is watched; -1 ends it.
int FANN_API OnEpoch(fann* network, fann_train_data* /*data*/, unsigned int /*maxEpochs*/,
                     unsigned int /*epochsBetweenReports*/, float /*maxError*/, unsigned int /*epoch*/) {
  return (*static_cast<const boost::function<bool()>*>(fann_get_user_data(network)))() ? 0 : -1;
}

}  // namespace

void TClassifierNeuralNetwork::TDestroy::operator()(fann* trained) const {
  fann_destroy(trained);
}

void TClassifierNeuralNetwork::TDestroy::operator()(fann_train_data* data) const {
  fann_destroy_train(data);
}

TClassifierNeuralNetwork::TClassifierNeuralNetwork() {
  name = "NeuralNetwork";
  // Sigmoid neurons saturate on large values; on scaled ones they begin where they learn fastest.
  normalize = true;
  SetCopyExamples(true);
  // So small an error that the number of epochs ends a training as a rule.
  settings = {{"hiddenlayers", "1"}, {"maxerror", "0.0000001"}, {"maxiterations", "1000"}};
}

TClassifierNeuralNetwork::~TClassifierNeuralNetwork() = default;

void TClassifierNeuralNetwork::Train() {
  if (!HasUniformExamples()) {
    return;
  }
  // The earlier network goes even if the new training fails: an answer of a network for other examples would be worse
  // than none.
  network.reset();
  output.reset();
  trainingData.reset();
  if (positiveExamples->GetItems().front()->GetLength() == 0) {
    return;
  }
  if (normalize) {
    ComputeNormalization();
    // In place, once. The next training scales the scaled values again, which changes them only if examples came that
    // leave their range.
    NormalizeExamples();
  }
  ReadSettings();
  trainingData = CreateTrainingData();
  if (!trainingData) {
    return;
  }
  const std::uint32_t layerCount = SetLayerSizes();
  network.reset(fann_create_standard_array(layerCount, layerSizes.data()));
  if (!network) {
    return;
  }
  // The library has drawn weights already, but seeds the generator with a number of the system's before it does. Drawn
  // again in the same range, they follow from our seed alone.
  std::srand(fixedSeed ? seed : static_cast<std::uint32_t>(std::time(nullptr)));
  fann_randomize_weights(network.get(), -kLargestWeight, kLargestWeight);
  // A negative number of iterations is meant to be an enormous one: then only the error ends the training.
  fann_set_user_data(network.get(), &trainingWatcher);
  fann_set_callback(network.get(), OnEpoch);
  // By the library's default algorithm, iRPROP- (C. Igel and M. Hüsken, "Improving the Rprop Learning Algorithm",
  // 2000): every weight has a step of its own, and there is no learning rate to choose. It works on whole epochs, so
  // that the order of the examples matters only to the rounding of sums.
  fann_train_on_data(network.get(), trainingData.get(), static_cast<std::uint32_t>(maxIterations),
                     trainingWatcher ? 1 : 0, maxError);
  // The error that training leaves is that of the weights before the last step; this pass measures those that stay.
  fann_test_data(network.get(), trainingData.get());
  fann_print_connections(network.get());
  mse = fann_get_MSE(network.get());
  output = std::make_unique<TNetworkOutput>(*network);
}

void TClassifierNeuralNetwork::ReadSettings() {
  hiddenLayerCount = std::min(ToInteger(GetSetting("hiddenlayers")), static_cast<std::int32_t>(kMaxHiddenLayers));
  maxIterations = ToInteger(GetSetting("maxiterations"));
  // The library compares in single precision.
  maxError = static_cast<float>(std::atof(GetSetting("maxerror").c_str()));
}

std::unique_ptr<fann_train_data, TClassifierNeuralNetwork::TDestroy> TClassifierNeuralNetwork::CreateTrainingData()
    const {
  const auto& positives = positiveExamples->GetItems();
  const std::size_t count = positives.size() + negativeExamples->GetItems().size();
  std::unique_ptr<fann_train_data, TDestroy> data(
      fann_create_train(static_cast<std::uint32_t>(count), positives.front()->GetLength(), 1));
  if (data) {
    const std::uint32_t row = FillRows(*data, *positiveExamples, 1.0, 0);
    FillRows(*data, *negativeExamples, 0.0, row);
  }
  return data;
}

std::uint32_t TClassifierNeuralNetwork::SetLayerSizes() {
  const auto hidden = static_cast<std::uint32_t>(std::max(hiddenLayerCount, 0));
  layerSizes[0] = positiveExamples->GetItems().front()->GetLength();
  std::fill_n(layerSizes.begin() + 1, hidden, kHiddenNeurons);
  // Bias neurons are the library's own business and not counted here.
  layerSizes[hidden + 1] = 1;
  return hidden + 2;
}

double TClassifierNeuralNetwork::Classify(const TFeatureVector& vector) const {
  const std::uint32_t length = vector.GetLength();
  if (!output || length != output->GetInputCount()) {
    return 0.0;
  }
  const auto inputs = std::make_unique_for_overwrite<double[]>(length + std::size_t{1});
  std::copy_n(vector.GetData(), length, inputs.get());
  if (normalize) {
    Normalize(inputs.get(), length);
  }
  // The sigmoid's range from 0 to 1 becomes -1 to 1, so that the boundary between the targets lies at 0.
  return 2 * output->Run(inputs.get()) - 1;
}

bool TClassifierNeuralNetwork::Save(std::FILE* file) const {
  if (!TClassifier::Save(file)) {
    return false;
  }
  if (!network) {
    return WriteBlock(file, "");
  }
  return StoreThroughFile(
      file, kTemporaryPrefix, [this](const char* filename) { return fann_save(network.get(), filename) == 0; },
      [](std::string_view text) { return ParseNetwork(text).has_value(); });
}

bool TClassifierNeuralNetwork::Load(std::FILE* file) {
  std::optional<TScaling> scaling = ReadScaling(file);
  const std::optional<std::string> text = scaling ? ReadBlock(file) : std::nullopt;
  if (!text) {
    return false;
  }
  std::unique_ptr<fann, TDestroy> loaded;
  if (!text->empty()) {
    const std::optional<std::uint32_t> inputs = ParseNetwork(*text);
    // Scaling and network come from different parts of the file and must speak of vectors of one length.
    if (!inputs || (scaling->dimension > 0 && *inputs != static_cast<std::uint32_t>(scaling->dimension))) {
      return false;
    }
    loaded.reset(LoadThroughFile(*text, kTemporaryPrefix, fann_create_from_file));
    if (!loaded) {
      return false;
    }
  }
  // A file without a range was written by a classifier that did not scale.
  normalize = scaling->dimension > 0;
  SetScaling(std::move(*scaling));
  network = std::move(loaded);
  output = network ? std::make_unique<TNetworkOutput>(*network) : nullptr;
  return true;
}

std::uint32_t TClassifierNeuralNetwork::GetHiddenLayerSize(std::uint32_t index) const {
  return index < kMaxHiddenLayers ? layerSizes[index + 1] : 0;
}

void TClassifierNeuralNetwork::SetHiddenLayerSize(std::uint32_t index, std::uint32_t size) {
  if (index < kMaxHiddenLayers) {
    layerSizes[index + 1] = size;
  }
}
