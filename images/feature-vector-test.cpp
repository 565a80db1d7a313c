#include "images/feature-vector.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "images/feature-vector-list.h"
#include "tests/support/test-vectors.h"

namespace {

std::vector<double> Numbers(const TFeatureVector& vector) {
  return {vector.GetData(), vector.GetData() + vector.GetLength()};
}

using TNumbers = std::vector<double>;
using TNames = std::vector<std::string>;

}  // namespace

TEST(TFeatureVector, ANewVectorIsEmptyAndBearsEveryOperation) {
  TFeatureVector vector;
  EXPECT_EQ(vector.GetLength(), 0u);
  EXPECT_EQ(vector.GetData(), nullptr);
  vector.Clear();
  vector.SetLength(0);
  TFeatureVector copy;
  copy.SetLength(3);
  copy.Assign(vector);
  EXPECT_EQ(copy.GetLength(), 0u);
}

TEST(TFeatureVector, SettingTheSameLengthKeepsTheNumbers) {
  const auto vector = MakeVector("v", {1.5, -2.0});
  const double* data = vector->GetData();
  vector->SetLength(2);
  EXPECT_EQ(vector->GetData(), data);
  EXPECT_EQ(Numbers(*vector), (TNumbers{1.5, -2.0}));
  vector->SetLength(3);
  vector->Clear();
  EXPECT_EQ(Numbers(*vector), (TNumbers{0.0, 0.0, 0.0}));
  EXPECT_EQ(vector->GetName(), "v");
}

TEST(TFeatureVector, AssignTakesNumbersAndNameAndSharesNothing) {
  const auto source = MakeVector("hsv", {1.0, 2.0, 3.0});
  const auto target = MakeVector("lbp", {9.0});
  target->Assign(*source);
  source->Clear();
  EXPECT_EQ(Numbers(*target), (TNumbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(target->GetName(), "hsv");
  target->Assign(*target);
  EXPECT_EQ(Numbers(*target), (TNumbers{1.0, 2.0, 3.0}));
}

TEST(TFeatureVectorList, FindMeetsTheFirstOfExactlyThatName) {
  TFeatureVectorList list;
  EXPECT_EQ(list.Find("lbp"), nullptr);
  list.Remove("lbp");
  for (const char* name : {"lb", "lbp", "LBP", "lbp"}) {
    list.Add(MakeVector(name, {1.0}).release());
  }
  EXPECT_EQ(list.Find("lbp"), list.GetItems()[1]);
  EXPECT_EQ(list.Find("LBP"), list.GetItems()[2]);
  EXPECT_EQ(list.Find("lbp2"), nullptr);
  EXPECT_EQ(list.Find(""), nullptr);
}

TEST(TFeatureVectorList, RemoveTakesEveryVectorOfTheNameAndKeepsTheOrder) {
  TFeatureVectorList list;
  for (const char* name : {"a", "b", "a", "c", "a", "a"}) {
    list.Add(MakeVector(name, {1.0}).release());
  }
  list.Remove("x");
  EXPECT_EQ(list.GetItems().size(), 6u);
  // The name may be that of a vector that goes.
  list.Remove(list.Find("a")->GetName());
  EXPECT_EQ(list.GetNames(), (TNames{"b", "c"}));
  list.Clear();
  EXPECT_EQ(list.GetNames(), TNames());
}

TEST(TFeatureVectorList, AListThatDoesNotOwnItsVectorsLeavesThemAlone) {
  const auto kept = MakeVector("kept", {1.0, 2.0});
  const auto removed = MakeVector("removed", {3.0});
  {
    TFeatureVectorList list;
    EXPECT_TRUE(list.GetOwnsItems());
    list.SetOwnsItems(false);
    list.Add(kept.get());
    list.Add(removed.get());
    list.Remove("removed");
    EXPECT_EQ(list.GetNames(), TNames{"kept"});
  }
  EXPECT_EQ(Numbers(*kept), (TNumbers{1.0, 2.0}));
  EXPECT_EQ(Numbers(*removed), TNumbers{3.0});
}
