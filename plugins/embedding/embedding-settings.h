#pragma once

#include <array>
#include <stdexcept>
#include <string>

/// What stands in embedding.txt: how a picture becomes the input of the network. What is left out has the values that
/// are usual for networks trained on ImageNet.
struct TEmbeddingSettings {
  enum class TFit {
    /// The shorter side is resized to `shorterSide`, and the center cut out.
    kCrop,
    /// The picture is resized to the input, whatever its shape.
    kStretch,
  };

  int width = 224;
  int height = 224;
  TFit fit = TFit::kCrop;
  /// 0: 256 for 224, and in that ratio for others.
  int shorterSide = 0;
  /// A number of the input is (pixel * scale - mean) / deviation, with the mean and the deviation of its channel, which
  /// stand in the order of the channels.
  double scale = 1.0 / 255.0;
  std::array<double, 3> mean = {0.485, 0.456, 0.406};
  std::array<double, 3> deviation = {0.229, 0.224, 0.225};
  bool isBgr = false;
  /// Name of the output; empty for the only one.
  std::string output;
};

/// Something of what the user brought cannot be used; what() is a whole sentence without its full stop.
class TUnusable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the settings from the text of embedding.txt. Throws TUnusable, with the line, if anything in it is not
/// understood.
TEmbeddingSettings ParseEmbeddingSettings(const std::string& text);
