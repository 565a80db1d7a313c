#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

/// What each descriptor of this directory defines; descriptor.cpp makes the seven exported functions of it.

/// A picture of the host's, valid during one call: one byte a pixel, or three in the order red, green, blue. Width and
/// height are 0 or more.
struct TPicture {
  const unsigned char* pixels;
  int width;
  int height;
  std::ptrdiff_t stride;

  bool IsEmpty() const { return width == 0 || height == 0; }
  const unsigned char* Row(int y) const { return pixels + y * stride; }
};

struct TDescriptor {
  /// What users type: lower case.
  const char* name;
  const char* description;
  /// Of each result, in doubles.
  int length;
  /// True for pictures in color, false for gray ones.
  bool isColor;
};

extern const TDescriptor kDescriptor;

/// Writes the descriptor of a picture that is not empty over `result`, which holds zeros. Throws std::bad_alloc.
void Describe(const TPicture& picture, std::span<double> result);

/// The first row or column of part `i`, if `size` of them are cut into `count` parts that are as equal as can be.
inline int PartBegin(int i, int count, int size) {
  return static_cast<int>(std::int64_t{i} * size / count);
}

/// Scales numbers of 0 and more to a sum of 1; zeros stay zeros.
inline void ScaleToUnitSum(std::span<double> numbers) {
  double sum = 0.0;
  for (const double number : numbers) {
    sum += number;
  }
  if (sum > 0.0) {
    for (double& number : numbers) {
      number /= sum;
    }
  }
}
