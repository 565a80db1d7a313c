#include "classifiers/classifier-types.h"

#include <algorithm>
#include <iterator>

#include "classifiers/classifier-nearest-neighbor.h"
#include "classifiers/classifier-neural-network.h"
#include "classifiers/classifier-svm.h"

namespace {

template <typename TMade>
std::unique_ptr<TClassifier> Make() {
  return std::make_unique<TMade>();
}

constexpr TClassifierType kTypes[] = {
    {"nearest", "Nearest neighbor", nullptr, Make<TClassifierNearestNeighbor>},
    {"neural", "Neural network", nullptr, Make<TClassifierNeuralNetwork>},
    {"svm", "Support vector machine, kernel: ", "kernel", Make<TClassifierSVM>},
};

}  // namespace

std::span<const TClassifierType> ClassifierTypes() {
  return kTypes;
}

const TClassifierType* FindClassifierType(const std::string& name) {
  const auto* const found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                         [&](const TClassifierType& type) { return type.name == name; });
  return found == std::end(kTypes) ? nullptr : found;
}
