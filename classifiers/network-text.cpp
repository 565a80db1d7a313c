#include "classifiers/network-text.h"

#include <vector>

#include "classifiers/text-cursor.h"

namespace {

/// One line "key=value" of the head of the text.
struct TField {
  std::string_view key;
  enum { kCount, kNumber } kind;
};

/// The fields of a saved network in the order in which the library writes and, reading, demands them.
constexpr TField kHead[] = {
    {"learning_rate=", TField::kNumber},
    {"connection_rate=", TField::kNumber},
    {"network_type=", TField::kCount},
    {"learning_momentum=", TField::kNumber},
    {"training_algorithm=", TField::kCount},
    {"train_error_function=", TField::kCount},
    {"train_stop_function=", TField::kCount},
    {"cascade_output_change_fraction=", TField::kNumber},
    {"quickprop_decay=", TField::kNumber},
    {"quickprop_mu=", TField::kNumber},
    {"rprop_increase_factor=", TField::kNumber},
    {"rprop_decrease_factor=", TField::kNumber},
    {"rprop_delta_min=", TField::kNumber},
    {"rprop_delta_max=", TField::kNumber},
    {"rprop_delta_zero=", TField::kNumber},
    {"cascade_output_stagnation_epochs=", TField::kCount},
    {"cascade_candidate_change_fraction=", TField::kNumber},
    {"cascade_candidate_stagnation_epochs=", TField::kCount},
    {"cascade_max_out_epochs=", TField::kCount},
    {"cascade_min_out_epochs=", TField::kCount},
    {"cascade_max_cand_epochs=", TField::kCount},
    {"cascade_min_cand_epochs=", TField::kCount},
    {"cascade_num_candidate_groups=", TField::kCount},
    {"bit_fail_limit=", TField::kNumber},
    {"cascade_candidate_limit=", TField::kNumber},
    {"cascade_weight_multiplier=", TField::kNumber},
};

/// The library knows activation functions 0 to 17.
constexpr std::uint32_t kActivationFunctions = 18;

bool TakeValue(TTextCursor& cursor, const TField& field, double& value) {
  if (field.kind == TField::kNumber) {
    return cursor.TakeNumber(value);
  }
  std::uint32_t count = 0;
  const bool taken = cursor.TakeCount(count);
  value = count;
  return taken;
}

bool TakeHead(TTextCursor& cursor) {
  for (const TField& field : kHead) {
    double value = 0.0;
    if (!cursor.Take(field.key) || !TakeValue(cursor, field, value) || !cursor.Take("\n")) {
      return false;
    }
    // Other kinds of network lay out their connections in other ways.
    if ((field.key == "connection_rate=" && value != 1.0) || (field.key == "network_type=" && value != 0.0)) {
      return false;
    }
  }
  return true;
}

/// "KEY_count=N", then "KEY=" and N values, each with a blank behind it.
bool TakeArray(TTextCursor& cursor, const TField& field, std::string_view countKey) {
  std::uint32_t count = 0;
  if (!cursor.Take(countKey) || !cursor.TakeCount(count) || !cursor.Take("\n") || !cursor.Take(field.key)) {
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    double value = 0.0;
    if (!TakeValue(cursor, field, value) || !cursor.Take(" ")) {
      return false;
    }
  }
  return cursor.Take("\n");
}

/// The neurons of each layer, its bias neuron included.
bool TakeLayers(TTextCursor& cursor, std::uint32_t layerCount, std::vector<std::uint32_t>& layers) {
  // Inputs and outputs at least.
  if (layerCount < 2 || !cursor.Take("layer_sizes=")) {
    return false;
  }
  for (std::uint32_t i = 0; i < layerCount; ++i) {
    std::uint32_t size = 0;
    // A neuron and a bias at least.
    if (!cursor.TakeCount(size) || !cursor.Take(" ") || size < 2) {
      return false;
    }
    // Memory grows with the text that was read and never on the word of a count.
    layers.push_back(size);
  }
  // One output, and the bias neuron that the library gives every layer, the last included.
  return cursor.Take("\n") && layers.back() == 2;
}

bool TakeNeuron(TTextCursor& cursor, std::uint32_t inputs) {
  std::uint32_t storedInputs = 0;
  std::uint32_t function = 0;
  double steepness = 0.0;
  return cursor.Take("(") && cursor.TakeCount(storedInputs) && cursor.Take(", ") && cursor.TakeCount(function) &&
         cursor.Take(", ") && cursor.TakeNumber(steepness) && cursor.Take(") ") && storedInputs == inputs &&
         function < kActivationFunctions;
}

/// Inputs and bias neurons have no inputs of their own; every other neuron has all neurons of the layer before.
bool TakeNeurons(TTextCursor& cursor, const std::vector<std::uint32_t>& layers) {
  if (!cursor.Take("neurons (num_inputs, activation_function, activation_steepness)=")) {
    return false;
  }
  for (std::size_t layer = 0; layer < layers.size(); ++layer) {
    for (std::uint32_t neuron = 0; neuron < layers[layer]; ++neuron) {
      // The last of each layer is its bias neuron.
      const bool isFed = layer > 0 && neuron + 1 < layers[layer];
      if (!TakeNeuron(cursor, isFed ? layers[layer - 1] : 0)) {
        return false;
      }
    }
  }
  return cursor.Take("\n");
}

/// The connections of one neuron: from each neuron of the layer before, which begins at neuron `first`.
bool TakeConnections(TTextCursor& cursor, std::uint64_t first, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t source = 0;
    double weight = 0.0;
    if (!cursor.Take("(") || !cursor.TakeCount(source) || !cursor.Take(", ") || !cursor.TakeNumber(weight) ||
        !cursor.Take(") ") || source != first + i) {
      return false;
    }
  }
  return true;
}

bool TakeAllConnections(TTextCursor& cursor, const std::vector<std::uint32_t>& layers) {
  if (!cursor.Take("connections (connected_to_neuron, weight)=")) {
    return false;
  }
  // 64 bits: sizes of 32 bits may add up to more, and a sum that wrapped around could match.
  std::uint64_t first = 0;
  for (std::size_t layer = 1; layer < layers.size(); ++layer) {
    for (std::uint32_t neuron = 0; neuron + 1 < layers[layer]; ++neuron) {
      if (!TakeConnections(cursor, first, layers[layer - 1])) {
        return false;
      }
    }
    first += layers[layer - 1];
  }
  return cursor.Take("\n");
}

}  // namespace

std::optional<std::uint32_t> ParseNetwork(std::string_view text) {
  TTextCursor cursor(text);
  std::uint32_t layerCount = 0;
  std::vector<std::uint32_t> layers;
  // The mark of a file with floating-point weights; fixed-point ones have another.
  const bool isNetwork =
      cursor.Take("FANN_FLO_2.1\nnum_layers=") && cursor.TakeCount(layerCount) && cursor.Take("\n") &&
      TakeHead(cursor) &&
      TakeArray(cursor, {"cascade_activation_functions=", TField::kCount}, "cascade_activation_functions_count=") &&
      TakeArray(cursor, {"cascade_activation_steepnesses=", TField::kNumber},
                "cascade_activation_steepnesses_count=") &&
      TakeLayers(cursor, layerCount, layers) && cursor.Take("scale_included=0\n") && TakeNeurons(cursor, layers) &&
      TakeAllConnections(cursor, layers) && cursor.AtEnd();
  return isNetwork ? std::optional(layers.front() - 1) : std::nullopt;
}
