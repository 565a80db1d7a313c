#include "images/var-image.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "images/var-database.h"
#include "tests/support/test-vectors.h"

namespace {

using TLines = std::vector<std::string>;

void AddVector(TImageSegment& segment, const std::string& name, double number) {
  segment.GetFeatures().Add(MakeVector(name, {number}).release());
}

void AddSegment(TVarImage& image, int x, const TLines& features) {
  auto segment = std::make_unique<TImageSegmentRect>();
  segment->SetX(x);
  for (const std::string& name : features) {
    AddVector(*segment, name, x);
  }
  image.GetSegments().push_back(std::move(segment));
}

}  // namespace

TEST(TVarImage, TheDescriptionNamesFileFeaturesAndSegments) {
  TVarImage image;
  EXPECT_EQ(image.GetType(), "image");
  EXPECT_EQ(image.GetDescription(), "Filename: \"\", no features");
  image.SetFilename("c:\\a \"b\" 100%s.jpg");
  EXPECT_EQ(image.GetDescription(), "Filename: \"c:\\a \"b\" 100%s.jpg\", no features");
  image.SetFilename("X");
  AddSegment(image, 1, {});
  EXPECT_EQ(image.GetDescription(), "Filename: \"X\", no features, 1 segments without features");
  // Only the first segment is looked at.
  AddSegment(image, 2, {"hsv"});
  EXPECT_EQ(image.GetDescription(), "Filename: \"X\", no features, 2 segments without features");
  AddVector(image.GetImageSegment(), "lbp", 1.0);
  AddVector(*image.GetSegments().front(), "lbp", 1.0);
  EXPECT_EQ(image.GetDescription(), "Filename: \"X\", features: lbp, 2 segments with features: lbp");
  AddVector(image.GetImageSegment(), "hsv", 1.0);
  AddVector(*image.GetSegments().front(), "meancolor", 1.0);
  EXPECT_EQ(image.GetDescription(), "Filename: \"X\", features: lbp, hsv, 2 segments with features: lbp, meancolor");
  image.GetSegments().clear();
  EXPECT_EQ(image.GetDescription(), "Filename: \"X\", features: lbp, hsv");
}

TEST(TVarImage, AssignCopiesAllAndSharesNothing) {
  auto source = std::make_unique<TVarImage>();
  source->SetName("a");
  source->SetFilename("a.jpg");
  source->GetImageSegment().SetWidth(640);
  AddVector(source->GetImageSegment(), "lbp", 1.5);
  AddSegment(*source, 7, {"hsv"});
  source->GetTags() = {"sky", "tree"};

  const std::unique_ptr<TVar> created = source->CreateNew();
  auto& target = dynamic_cast<TVarImage&>(*created);
  EXPECT_EQ(target.GetDescription(), "Filename: \"\", no features");
  target.SetName("b");
  AddVector(target.GetImageSegment(), "old", 1.0);
  AddSegment(target, 1, {"old"});
  AddSegment(target, 2, {"old"});
  target.GetTags() = {"old"};
  target.Assign(source.get());
  source->GetImageSegment().GetFeatures().Remove("lbp");
  source.reset();

  EXPECT_EQ(target.GetName(), "b");
  EXPECT_EQ(target.GetDescription(), "Filename: \"a.jpg\", features: lbp, 1 segments with features: hsv");
  EXPECT_EQ(target.GetImageSegment().GetWidth(), 640);
  EXPECT_EQ(*target.GetImageSegment().GetFeatures().Find("lbp")->GetData(), 1.5);
  EXPECT_EQ(dynamic_cast<TImageSegmentRect&>(*target.GetSegments()[0]).GetX(), 7);
  EXPECT_EQ(target.GetTags(), (TLines{"sky", "tree"}));
}

TEST(TVarImage, ItselfNothingAndOtherTypesAreNoSource) {
  TVarImage image;
  image.SetFilename("a.jpg");
  AddVector(image.GetImageSegment(), "lbp", 1.5);
  AddSegment(image, 7, {"hsv"});
  image.GetTags() = {"sky"};
  const TVarDatabase database;
  for (const TVar* source : std::vector<const TVar*>{&image, nullptr, &database}) {
    image.Assign(source);
    EXPECT_EQ(image.GetDescription(), "Filename: \"a.jpg\", features: lbp, 1 segments with features: hsv");
    EXPECT_EQ(image.GetTags(), TLines{"sky"});
  }
}
