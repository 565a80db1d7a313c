// The SIFT engine with any numbers in its picture and its parameters, and with keypoints that no detection found. The
// input has a byte that chooses between the workbench's parameters and the next ones, then the parameters, a keypoint
// and the picture.

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

#include "Sift/sift-conv.h"
#include "Sift/sift-parameters.h"
#include "Sift/sift.h"
#include "fuzz/input.h"

namespace {

/// True if the scale space is small enough for one input.
bool IsSmall(const VL::TSiftParameters& p, std::int32_t width, std::int32_t height) {
  const double levels = 1.0 + p.smax - p.smin;
  const double area = std::ldexp(static_cast<double>(width) * height, -2 * std::clamp(p.omin, -30, 30));
  return levels < 1 || (levels <= 64 && levels * area <= 150000);
}

/// The filter against its definition.
void CompareConvolution(const std::vector<float>& image, std::int32_t width, std::int32_t height,
                        const std::vector<float>& filter) {
  const std::int32_t radius = static_cast<std::int32_t>(filter.size()) / 2;
  std::vector<float> turned(image.size());
  std::vector<float> expected(image.size());
  VL::ConvolveTranspose(turned.data(), image.data(), width, height, filter.data(), radius);
  VL::ConvolveTranspose(expected.data(), turned.data(), height, width, filter.data(), radius);
  std::vector<float> result(image.size());
  std::vector<float> work(image.size());
  const std::int32_t middle = height / 2;
  const VL::Detail::TConvolution convolution = {result.data(), work.data(),   image.data(), width,
                                                height,        filter.data(), radius};
  VL::Detail::Convolve(convolution, 0, middle);
  VL::Detail::Convolve(convolution, middle, height);
  for (std::size_t i = 0; i < result.size(); ++i) {
    Require(std::isnan(expected[i])
                ? std::isnan(result[i])
                : std::bit_cast<std::uint32_t>(result[i]) == std::bit_cast<std::uint32_t>(expected[i]));
  }
}

void Describe(VL::Sift& sift, const VL::Sift::Keypoint& keypoint, float angle) {
  std::array<float, VL::Sift::kMaxOrientations> angles = {};
  std::array<float, VL::Sift::kDescriptorLength> descriptor = {};
  const std::int32_t count = sift.ComputeOrientations(angles.data(), keypoint);
  Require(count >= 0 && count <= VL::Sift::kMaxOrientations);
  for (std::int32_t i = 0; i < count; ++i) {
    Require(angles[static_cast<std::size_t>(i)] >= 0 && angles[static_cast<std::size_t>(i)] < 6.2831855F);
    sift.ComputeDescriptor(descriptor.data(), keypoint, angles[static_cast<std::size_t>(i)]);
  }
  sift.ComputeDescriptor(descriptor.data(), keypoint, angle);
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TInputReader reader(data, size);
  const auto choice = reader.Take<std::uint8_t>();
  const std::int32_t width = reader.Take<std::uint8_t>() % 65;
  const std::int32_t height = reader.Take<std::uint8_t>() % 65;
  VL::TSiftParameters p;
  if ((choice & 1) != 0) {
    p.sigman = reader.Take<float>();
    p.sigma0 = reader.Take<float>();
    // Small ones mean something, and any may come.
    const auto number = [&] { return (choice & 2) != 0 ? reader.Take<std::int8_t>() : reader.Take<std::int32_t>(); };
    p.O = number();
    p.S = number();
    p.omin = number();
    p.smin = number();
    p.smax = number();
    p.threshold = reader.Take<float>();
    p.edgeThreshold = reader.Take<float>();
  }
  VL::Sift::Keypoint made = {};
  // Small ones of either sign.
  for (int* field : {&made.o, &made.ix, &made.iy, &made.is}) {
    *field = std::int32_t{reader.Take<std::int8_t>()};
  }
  made.x = reader.Take<float>();
  made.y = reader.Take<float>();
  made.s = reader.Take<float>();
  made.sigma = reader.Take<float>();
  const auto magnification = reader.Take<float>();
  const auto angle = reader.Take<float>();
  if (!IsSmall(p, width, height)) {
    return 0;
  }
  // Bytes give pictures with keypoints sooner than floats do.
  std::vector<float> image(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (float& value : image) {
    value = (choice & 4) != 0 ? reader.Take<float>() : static_cast<float>(reader.Take<std::uint8_t>()) / 255.0F;
  }
  VL::Sift sift(image.data(), width, height, p.sigman, p.sigma0, p.O, p.S, p.omin, p.smin, p.smax);
  sift.DetectKeypoints(p.threshold, p.edgeThreshold);
  sift.magnification = (choice & 8) != 0 ? magnification : 3.0F;
  sift.normalizeDescriptors = (choice & 16) == 0;
  const auto count = std::min<std::ptrdiff_t>(sift.KeypointsEnd() - sift.KeypointsBegin(), 8);
  for (auto keypoint = sift.KeypointsBegin(); keypoint != sift.KeypointsBegin() + count; ++keypoint) {
    Describe(sift, *keypoint, angle);
  }
  Describe(sift, made, angle);
  Describe(sift, sift.MakeKeypoint(made.x, made.y, made.sigma), angle);
  // The object serves for another picture.
  sift.BuildPyramid(image.data(), height, width);
  sift.DetectKeypoints(p.threshold, p.edgeThreshold);
  if (!image.empty() && (choice & 32) != 0) {
    std::vector<float> filter(2 * (choice >> 6) * 5 + 1);
    std::generate(filter.begin(), filter.end(), [&] { return reader.Take<float>(); });
    CompareConvolution(image, width, height, filter);
  }
  return 0;
}
