#include "classifiers/var-classifier.h"

#include <memory>

#include <gtest/gtest.h>

#include "classifiers/classifier.h"
#include "images/var-image.h"

TEST(TVarClassifier, DescribesItsClassifier) {
  TVarClassifier variable;
  EXPECT_EQ(variable.GetType(), "classifier");
  EXPECT_EQ(variable.GetDescription(), "");
  EXPECT_EQ(variable.GetClassifier(), nullptr);
  variable.SetClassifierType("nearest");
  EXPECT_EQ(variable.GetDescription(), "Nearest neighbor");
  variable.SetClassifierType("neural");
  EXPECT_EQ(variable.GetDescription(), "Neural network");
  variable.SetClassifierType("svm");
  variable.GetClassifier()->SetSetting("kernel", "sigmoid");
  EXPECT_EQ(variable.GetDescription(), "Support vector machine, kernel: sigmoid");
  variable.SetClassifierType("knn");
  EXPECT_EQ(variable.GetDescription(), "");
  EXPECT_EQ(variable.GetClassifierType(), "");
  EXPECT_EQ(variable.GetClassifier(), nullptr);
}

TEST(TVarClassifier, AssignTakesOverTheTypeOnly) {
  TVarClassifier source;
  source.SetClassifierType("svm");
  source.GetClassifier()->SetSetting("kernel", "linear");
  TFeatureVector example;
  source.GetClassifier()->AddPositiveExample(&example);

  const std::unique_ptr<TVar> target = source.CreateNew();
  auto& copy = dynamic_cast<TVarClassifier&>(*target);
  EXPECT_EQ(copy.GetClassifier(), nullptr);
  copy.Assign(&source);
  EXPECT_EQ(copy.GetClassifierType(), "svm");
  EXPECT_EQ(copy.GetClassifier()->GetSetting("kernel"), "rbf");
  EXPECT_TRUE(copy.GetClassifier()->GetPositiveExamples().GetItems().empty());

  const TClassifier* before = source.GetClassifier();
  const TVarImage image;
  source.Assign(nullptr);
  source.Assign(&image);
  EXPECT_EQ(source.GetClassifier(), before);
  EXPECT_EQ(source.GetClassifier()->GetSetting("kernel"), "linear");
  const std::weak_ptr<TClassifier> watch = source.WatchClassifier();
  source.Assign(&source);
  EXPECT_TRUE(watch.expired()) << "a copy of itself is a new classifier too";
  EXPECT_EQ(source.GetClassifier()->GetSetting("kernel"), "rbf");
  copy.SetClassifierType(copy.GetClassifierType());
  EXPECT_EQ(copy.GetClassifierType(), "svm");
}

TEST(TVarClassifier, WatchersNoticeTheEndOfTheClassifier) {
  std::weak_ptr<TClassifier> watch;
  {
    TVarClassifier variable;
    variable.SetClassifierType("nearest");
    watch = variable.WatchClassifier();
    EXPECT_EQ(watch.lock().get(), variable.GetClassifier());
    variable.SetClassifierType("nearest");
    EXPECT_TRUE(watch.expired());
    watch = variable.WatchClassifier();
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}
