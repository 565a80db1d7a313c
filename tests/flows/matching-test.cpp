// The descriptors of the SIFT engine on a real photograph: two overlapping crops show the same things at places that
// differ by the shift of the crops, and nearest descriptors must find them.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "Sift/sift-parameters.h"
#include "Sift/sift.h"
#include "images/crop.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

struct TDescribed {
  float x;
  float y;
  std::array<float, VL::Sift::kDescriptorLength> descriptor;
};

std::vector<TDescribed> Describe(const TImageGray& picture) {
  std::vector<float> values;
  for (int y = 0; y < picture.GetHeight(); ++y) {
    for (int x = 0; x < picture.GetWidth(); ++x) {
      values.push_back(static_cast<float>(picture.GetPixels()[y * picture.GetStride() + x]) / 255.0F);
    }
  }
  // As the method "sift", but from the whole picture on.
  constexpr VL::TSiftParameters kParameters;
  VL::Sift sift(values.data(), picture.GetWidth(), picture.GetHeight(), kParameters.sigman, kParameters.sigma0,
                kParameters.O, kParameters.S, 0, kParameters.smin, kParameters.smax);
  sift.DetectKeypoints(kParameters.threshold, kParameters.edgeThreshold);
  std::vector<TDescribed> described;
  for (auto keypoint = sift.KeypointsBegin(); keypoint != sift.KeypointsEnd(); ++keypoint) {
    std::array<float, VL::Sift::kMaxOrientations> angles;
    const int count = sift.ComputeOrientations(angles.data(), *keypoint);
    for (int i = 0; i < count; ++i) {
      TDescribed each = {keypoint->x, keypoint->y, {}};
      sift.ComputeDescriptor(each.descriptor.data(), *keypoint, angles[static_cast<std::size_t>(i)]);
      described.push_back(each);
    }
  }
  return described;
}

/// The nearest of `candidates`, or null if the second nearest at another place is about as near.
const TDescribed* Match(const TDescribed& wanted, const std::vector<TDescribed>& candidates) {
  const TDescribed* best = nullptr;
  float bestDistance = std::numeric_limits<float>::infinity();
  float nextDistance = bestDistance;
  for (const TDescribed& candidate : candidates) {
    float distance = 0.0F;
    for (std::size_t i = 0; i < wanted.descriptor.size(); ++i) {
      distance += std::pow(wanted.descriptor[i] - candidate.descriptor[i], 2.0F);
    }
    if (distance < bestDistance) {
      nextDistance = bestDistance;
      bestDistance = distance;
      best = &candidate;
    } else {
      nextDistance = std::min(nextDistance, distance);
    }
  }
  // The square of the ratio 0.8 of section 7.1 of Lowe's paper.
  return bestDistance < 0.64F * nextDistance ? best : nullptr;
}

TEST(TSift, MatchesTwoOverlappingCropsOfAPhotograph) {
  constexpr int kShiftX = 41;
  constexpr int kShiftY = 23;
  TImageRGB photo;
  ASSERT_TRUE(photo.LoadFromFile(SAMPLES_DIRECTORY "/photos/im5.jpg"));
  TImageGray gray;
  photo.ToGray(gray);
  TImageGray first;
  TImageGray second;
  CropImage(gray, 0, 0, gray.GetWidth() - kShiftX, gray.GetHeight() - kShiftY, first);
  CropImage(gray, kShiftX, kShiftY, gray.GetWidth(), gray.GetHeight(), second);
  const auto left = Describe(first);
  const auto right = Describe(second);
  int matches = 0;
  int correct = 0;
  for (const TDescribed& each : left) {
    if (const TDescribed* match = Match(each, right)) {
      ++matches;
      correct += std::hypot(each.x - kShiftX - match->x, each.y - kShiftY - match->y) < 2.0F ? 1 : 0;
    }
  }
  EXPECT_GT(matches, 60);
  // Where a crop cuts what a descriptor looks at, it may go astray.
  EXPECT_GE(correct * 10, matches * 9) << correct << " of " << matches;
}

}  // namespace
