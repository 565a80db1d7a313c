#include "segmentation/image-segment.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/test-vectors.h"

namespace {

/// A segment without a rectangle.
class TImageSegmentPoint : public TImageSegment {
 public:
  std::unique_ptr<TImageSegment> Clone() const override { return std::make_unique<TImageSegmentPoint>(); }
};

void AddVector(TImageSegment& segment, const std::string& name, double number) {
  segment.GetFeatures().Add(MakeVector(name, {number}).release());
}

std::unique_ptr<TImageSegmentRect> MakeSegment(int x, const std::string& label) {
  auto segment = std::make_unique<TImageSegmentRect>();
  segment->SetX(x);
  segment->SetY(-2);
  segment->SetWidth(30);
  segment->SetHeight(4);
  segment->SetLabel(label);
  AddVector(*segment, "lbp", x);
  AddVector(*segment, "hsv", 0.5);
  return segment;
}

/// Rectangle, label and features as one text.
std::string Text(const TImageSegment& segment) {
  const auto& rect = dynamic_cast<const TImageSegmentRect&>(segment);
  std::string text = std::to_string(rect.GetX()) + "," + std::to_string(rect.GetY()) + " " +
                     std::to_string(rect.GetWidth()) + "x" + std::to_string(rect.GetHeight()) + " '" + rect.GetLabel() +
                     "'";
  for (const TFeatureVector* vector : rect.GetFeatures().GetItems()) {
    text += " " + vector->GetName() + "=" + std::to_string(*vector->GetData());
  }
  return text;
}

}  // namespace

TEST(TImageSegmentRect, ACloneHasTheSamePlaceAndFeaturesAndNoLabel) {
  auto segment = MakeSegment(1, "sky");
  const auto clone = segment->Clone();
  EXPECT_EQ(Text(*clone), "1,-2 30x4 '' lbp=1.000000 hsv=0.500000");
  *segment->GetFeatures().Find("lbp")->GetData() = 9.0;
  segment.reset();
  EXPECT_EQ(Text(*clone), "1,-2 30x4 '' lbp=1.000000 hsv=0.500000") << "the clone's features are its own";
}

TEST(TImageSegmentRect, AssignReplacesTheFeaturesAndKeepsTheLabel) {
  const auto target = MakeSegment(1, "sky");
  AddVector(*target, "old", 7.0);
  target->Assign(*MakeSegment(5, "grass"));
  EXPECT_EQ(Text(*target), "5,-2 30x4 'sky' lbp=5.000000 hsv=0.500000");
  target->Assign(*target);
  EXPECT_EQ(Text(*target), "5,-2 30x4 'sky' lbp=5.000000 hsv=0.500000");
  TImageSegmentPoint point;
  AddVector(point, "sift", 3.0);
  target->Assign(point);
  EXPECT_EQ(Text(*target), "5,-2 30x4 'sky' sift=3.000000") << "a source without a rectangle leaves that as it is";
}

TEST(SegmentLists, CopiesReplaceWhatWasThereAndNullEntriesAreSkipped) {
  TImageSegmentList source;
  source.push_back(MakeSegment(1, "sky"));
  source.push_back(nullptr);
  source.push_back(MakeSegment(2, "grass"));
  TImageSegmentList destination;
  destination.push_back(MakeSegment(9, "old"));
  CopySegments(destination, source);
  ASSERT_EQ(destination.size(), 2u);
  EXPECT_EQ(Text(*destination[0]), "1,-2 30x4 '' lbp=1.000000 hsv=0.500000");
  EXPECT_EQ(Text(*destination[1]), "2,-2 30x4 '' lbp=2.000000 hsv=0.500000");
  CopySegments(source, source);
  EXPECT_EQ(source.size(), 3u);
  ClearSegments(source);
  ClearSegments(source);
  EXPECT_TRUE(source.empty());
  EXPECT_EQ(Text(*destination[1]), "2,-2 30x4 '' lbp=2.000000 hsv=0.500000");
}
