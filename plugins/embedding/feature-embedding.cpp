// "embedding": the output of a network of the user's, as the vector of a picture. embedding.onnx and embedding.txt lie
// beside this library. The elements are the output in row-major order, divided by the sum of their magnitudes; all are
// 0 where that sum is 0, for an empty picture, and where the network fails. One thread, the same bytes in every run.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/dnn.hpp>

#include "plugins/embedding/embedding-settings.h"
#include "plugins/embedding/picture-to-tensor.h"
#include "sdk/feature-plugin.h"

namespace filesystem = std::filesystem;

namespace {

// The most numbers that the workbench takes from a feature.
constexpr std::int32_t kLongest = 1 << 24;
/// In bytes: far more than all words with their values take.
constexpr std::uintmax_t kLongestSettings = 65536;

/// What the library has to say of a failure, in brackets: the innermost of its messages, without the place in its
/// sources. Failed assertions are long and tell a user little, so they are cut.
std::string WhatFailed(const cv::Exception& failure) {
  constexpr std::size_t kMost = 100;
  std::string text = failure.err.substr(0, failure.err.find('\n'));
  if (const std::size_t inner = text.rfind("error: ("); inner != std::string::npos) {
    text.erase(0, text.find(") ", inner) + 2);
  }
  return " (" + (text.size() > kMost ? text.substr(0, kMost) + "..." : text) + ")";
}

class TNetwork {
 public:
  /// Throws TUnusable if the network of that directory cannot be used.
  explicit TNetwork(const filesystem::path& directory) : settings(ReadSettings(directory / "embedding.txt")) {
    // The order in which threads add up numbers would change the last digits from run to run.
    cv::setNumThreads(1);
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    Load(directory / "embedding.onnx");
    output = FindOutput();
    // The network has not seen a picture before it has run: sizes that do not fit are only noticed then.
    // At most 3 * 4096 * 4096 bytes, for which an int has room.
    const std::vector<unsigned char> gray(static_cast<std::size_t>(3 * settings.width * settings.height), 128);
    length = Run(gray.data(), settings.width, settings.height, 3 * settings.width).size();
    if (length < 1 || length > kLongest) {
      throw TUnusable("the network in embedding.onnx gives " + std::to_string(length) + " numbers");
    }
  }

  std::int32_t GetLength() const { return static_cast<std::int32_t>(length); }

  /// The vector of a picture that is not empty. Throws TUnusable if the network fails.
  std::vector<double> Run(const unsigned char* pixels, std::int32_t width, std::int32_t height, std::int32_t stride) {
    std::vector<float> tensor = PictureToTensor(pixels, width, height, stride, settings);
    const std::vector<int> shape = {1, 3, settings.height, settings.width};
    cv::Mat answer;
    try {
      network.setInput(cv::Mat(shape, CV_32F, tensor.data()));
      answer = network.forward(output);
    } catch (const cv::Exception& failure) {
      throw TUnusable("the network in embedding.onnx does not run on one picture of " + std::to_string(settings.width) +
                      " x " + std::to_string(settings.height) + " with 3 channels; see 'size' in embedding.txt" +
                      WhatFailed(failure));
    }
    if (answer.type() != CV_32F || !answer.isContinuous()) {
      throw TUnusable("the network in embedding.onnx does not give 32-bit floats");
    }
    std::vector<double> numbers(answer.ptr<float>(), answer.ptr<float>() + answer.total());
    // The workbench compares by the sum of absolute differences: where magnitudes add up to 1, that is 2 at most,
    // however large the numbers of a network are.
    double sum = 0.0;
    for (const double number : numbers) {
      sum += std::abs(number);
    }
    // One element that is not finite makes the sum so: doubles hold any sum of finite floats.
    if (!std::isfinite(sum)) {
      throw TUnusable("the network in embedding.onnx gives values that are not finite");
    }
    if (sum > 0.0) {
      std::transform(numbers.begin(), numbers.end(), numbers.begin(), [sum](double number) { return number / sum; });
    }
    return numbers;
  }

 private:
  static TEmbeddingSettings ReadSettings(const filesystem::path& path) {
    std::ifstream file;
    // Opening a named pipe would wait for its other end.
    if (filesystem::is_regular_file(path)) {
      file.open(path, std::ios::binary);
    }
    if (!file.is_open()) {
      throw TUnusable("embedding.txt cannot be read; it belongs beside the library, and may be empty");
    }
    if (filesystem::file_size(path) > kLongestSettings) {
      throw TUnusable("embedding.txt is larger than a few lines can be");
    }
    return ParseEmbeddingSettings({std::istreambuf_iterator<char>(file), {}});
  }

  void Load(const filesystem::path& path) {
    if (!filesystem::is_regular_file(path) || !std::ifstream(path)) {
      throw TUnusable("embedding.onnx cannot be read; it belongs beside the library");
    }
    // Larger ones keep their weights in files beside, which are not read.
    // A message of Protocol Buffers, which an ONNX file is, has less than 2 GiB.
    if (filesystem::file_size(path) > std::numeric_limits<std::int32_t>::max()) {
      throw TUnusable("embedding.onnx has 2 GiB or more, which its format does not allow");
    }
    try {
      network = cv::dnn::readNetFromONNX(path.string());
    } catch (const cv::Exception& failure) {
      throw TUnusable(
          "embedding.onnx is no network that can be read: it is cut off, something else, or has operators "
          "that are not known" +
          WhatFailed(failure));
    }
    if (network.empty()) {
      throw TUnusable("embedding.onnx holds no network");
    }
    // Others may be compiled in, and round differently.
    network.setPreferableBackend(cv::dnn::DNN_BACKEND_OPENCV);
    network.setPreferableTarget(cv::dnn::DNN_TARGET_CPU);
  }

  /// The name under which the library knows the output of the settings, or the only one.
  std::string FindOutput() {
    const std::vector<std::string> outputs = network.getUnconnectedOutLayersNames();
    if (settings.output.empty()) {
      if (outputs.size() == 1) {
        return outputs.front();
      }
      std::string names;
      for (const std::string& name : outputs) {
        names += (names.empty() ? "" : ", ") + name;
      }
      throw TUnusable("the network in embedding.onnx has several outputs (" + names +
                      "); embedding.txt must name one, as in: output " + outputs.front());
    }
    if (std::find(outputs.begin(), outputs.end(), settings.output) != outputs.end()) {
      return settings.output;
    }
    // The library renames the nodes of a network that it reads; which prefix it uses depends on its version.
    for (const char* prefix : {"", "onnx_node!", "onnx_node_output_0!"}) {
      if (network.getLayerId(prefix + settings.output) >= 0) {
        return prefix + settings.output;
      }
    }
    throw TUnusable("the network in embedding.onnx has no output or node called '" + settings.output + "'");
  }

  TEmbeddingSettings settings;
  cv::dnn::Net network;
  std::string output;
  std::size_t length = 0;
};

/// The one network of the process, loaded at the first call; null, and the reason, if that failed.
struct TState {
  TState() {
    try {
      Dl_info place;
      // The library's own file, beside which the network lies, wherever the workbench was started.
      if (dladdr(reinterpret_cast<const void*>(&GetRefusal), &place) == 0 || place.dli_fname == nullptr) {
        throw TUnusable("its own directory is not known");
      }
      network = std::make_unique<TNetwork>(filesystem::path(place.dli_fname).parent_path());
    } catch (const std::exception& failure) {
      refusal = failure.what();
    }
  }

  std::unique_ptr<TNetwork> network;
  std::string refusal;
};

TState& State() {
  static TState state;
  return state;
}

}  // namespace

const char* GetRefusal() {
  return State().refusal.c_str();
}

const char* GetDescription() {
  return "The output of the network in embedding.onnx, scaled to a sum of magnitudes of 1";
}

const char* GetShortDescription() {
  return "embedding";
}

bool NeedsGrayscale() {
  return false;
}

bool NeedsColor() {
  return true;
}

std::int32_t GetFeatureLength() {
  return State().network ? State().network->GetLength() : 0;
}

std::int32_t ProcessGrayscale(const unsigned char* /*pixels*/, std::int32_t /*width*/, std::int32_t /*height*/,
                              std::int32_t /*stride*/, double* /*features*/) {
  return 0;
}

std::int32_t ProcessColor(const unsigned char* pixels, std::int32_t width, std::int32_t height, std::int32_t stride,
                          double* features) {
  const std::int32_t length = GetFeatureLength();
  std::fill(features, features + length, 0.0);
  if (length == 0 || width < 1 || height < 1) {
    return 0;
  }
  try {
    const std::vector<double> numbers = State().network->Run(pixels, width, height, stride);
    // A network may give other lengths for other pictures; the host has room for what was promised.
    if (numbers.size() == static_cast<std::size_t>(length)) {
      std::copy(numbers.begin(), numbers.end(), features);
    }
  } catch (const std::exception&) {
    // Nothing may be thrown at the workbench, and no better vector is to be had.
  }
  return 0;
}
