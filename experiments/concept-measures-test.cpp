#include "experiments/concept-measures.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

TEST(ConceptMeasures, TiesCountHalfInTheAreaUnderTheCurve) {
  const auto area = [](const std::vector<double>& positives, const std::vector<double>& negatives) {
    return AreaUnderCurve(positives, negatives);
  };
  // 3 is above both; each 1 is above 0 and level with 1: (2 + 1.5 + 1.5) of 6 pairs.
  EXPECT_DOUBLE_EQ(area({1, 3, 1}, {1, 0}), 5.0 / 6.0);
  EXPECT_EQ(area({2, 3}, {1, -1, 0}), 1.0);
  EXPECT_EQ(area({-2}, {1, -1, 0}), 0.0);
  EXPECT_EQ(area({0.5, 0.5}, {0.5, 0.5, 0.5}), 0.5);
}

TEST(ConceptMeasures, HalvesFollowTheDigestsOfSeedAndName) {
  // printf '1\tim1.jpg' | sha256sum, and so on: for seed 1 im4 548b.., im2 6a09.., im3 e024.., im5 f066.., im1 f0e2..;
  // for seed 2 im2 2f10.., im1 4104.., im3 73da.., im4 91c4.., im5 ecf4..
  const std::vector<std::string> names = {"im1.jpg", "im2.jpg", "im3.jpg", "im4.jpg", "im5.jpg"};
  using TPictures = std::vector<std::uint32_t>;
  EXPECT_EQ(SplitHalves(names, {0, 1, 2, 3, 4}, 1), std::pair(TPictures{3, 1, 2}, TPictures{4, 0}));
  EXPECT_EQ(SplitHalves(names, {0, 1, 2, 3, 4}, 2), std::pair(TPictures{1, 0, 2}, TPictures{3, 4}));
  EXPECT_EQ(SplitHalves(names, {0, 3}, 2), std::pair(TPictures{0}, TPictures{3}));
}

TEST(ConceptMeasures, PicturesAndSegmentsAreCountedBothWays) {
  const auto segment = [](double score, bool isPositive) { return TAskedSegment{0, 0, 1, 1, score, isPositive}; };
  TMeasuredConcept measured = {};
  measured.asked = {{0, true, 4, 1, {segment(1, true), segment(0.5, true), segment(-0.75, false), segment(-1, false)}},
                    {1, false, 2, 1, {segment(0.25, true), segment(-1, false)}}};
  EXPECT_EQ(measured.asked[0].GetFraction(), 0.5);
  EXPECT_EQ(measured.asked[0].GetMeanScore(), -0.0625);
  EXPECT_EQ(measured.asked[0].CountRight(), 2u);
  EXPECT_EQ(measured.asked[1].CountRight(), 1u);
  const TSegmentCounts counts = measured.CountSegments();
  EXPECT_EQ(counts.truePositives, 2u);
  EXPECT_EQ(counts.falseNegatives, 2u);
  EXPECT_EQ(counts.falsePositives, 1u);
  EXPECT_EQ(counts.trueNegatives, 1u);
  EXPECT_EQ(counts.GetTotal(), 6u);
}
