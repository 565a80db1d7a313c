// The three commands on classifiers, as the language calls them.
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "classifiers/classifier.h"
#include "classifiers/function-create-classifier.h"
#include "classifiers/function-get-classifier-setting.h"
#include "classifiers/function-set-classifier-setting.h"
#include "classifiers/var-classifier.h"
#include "images/var-image.h"

namespace {

using TLines = std::vector<std::string>;

class TClassifierCommands : public testing::Test {
 protected:
  TClassifierCommands() {
    for (TFunction* function : std::vector<TFunction*>{&create, &set, &get}) {
      function->SetVarList(&variables);
      function->SetOutput([this](const std::string& line) { lines.push_back(line); });
    }
  }

  /// Runs `variableName = createclassifier(type)`.
  bool Create(const std::string& variableName, const std::string& type) {
    std::unique_ptr<TVar> made = create.CreateReturnVariable();
    TVar& variable = *made;
    made->SetName(variableName);
    variables.Add(std::move(made));
    return create.CheckParameters({type}) && create.ExecuteWithReturn(variable, {type});
  }

  /// Runs a command; the lines are those that it printed, and "failed" if it did.
  TLines Run(TFunction& function, const TLines& params) {
    lines.clear();
    if (!function.CheckParameters(params) || !function.Execute(params)) {
      lines.emplace_back("failed");
    }
    return lines;
  }

  std::string Description(const std::string& name) { return variables.Find(name)->GetDescription(); }

  TVarList variables;
  TFunctionCreateClassifier create;
  TFunctionSetClassifierSetting set;
  TFunctionGetClassifierSetting get;
  TLines lines;
};

}  // namespace

TEST_F(TClassifierCommands, CreateKnowsThreeTypesAndStartsAnew) {
  EXPECT_TRUE(Create("a", "\"nearest\""));
  EXPECT_TRUE(Create("b", "\"neural\""));
  EXPECT_TRUE(Create("c", "\"svm\""));
  EXPECT_EQ(Description("a"), "Nearest neighbor");
  EXPECT_EQ(Description("b"), "Neural network");
  EXPECT_EQ(Description("c"), "Support vector machine, kernel: rbf");
  EXPECT_EQ(lines, TLines());
  EXPECT_FALSE(Create("d", "\"knn\""));
  EXPECT_FALSE(Create("e", "\"\""));
  EXPECT_EQ(lines, TLines({"Unknown classifier type", "Unknown classifier type"}));
  Run(set, {"c", "\"kernel\"", "\"linear\""});
  ASSERT_TRUE(create.ExecuteWithReturn(*variables.Find("c"), {"\"svm\""}));
  EXPECT_EQ(Run(get, {"c", "\"kernel\""}), TLines({"kernel = rbf"}));
}

TEST_F(TClassifierCommands, SettingsAreShownInOrderAndTakeAnyText) {
  Create("a", "\"nearest\"");
  Create("b", "\"neural\"");
  Create("c", "\"svm\"");
  const TLines all = {"3 setting available: ", "hiddenlayers = 1", "maxerror = 0.0000001", "maxiterations = 1000"};
  EXPECT_EQ(Run(get, {"a"}), TLines({"0 setting available: "}));
  EXPECT_EQ(Run(get, {"b"}), all);
  EXPECT_EQ(Run(get, {"b", "\"\""}), all);
  EXPECT_EQ(Run(get, {"b", "\"kernel\""}), TLines({"kernel = "}));
  EXPECT_EQ(Run(set, {"c", "\"kernel\"", "\"sigmoid\""}), TLines());
  EXPECT_EQ(Description("c"), "Support vector machine, kernel: sigmoid");
  EXPECT_EQ(Run(set, {"c", "\"kernel\"", "\"\""}), TLines());
  EXPECT_EQ(Run(get, {"c"}), TLines({"1 setting available: ", "kernel = "}));
  EXPECT_EQ(Run(set, {"c", "\"nosuch\"", "\"1\""}), TLines({"Setting 'nosuch' does not exist", "failed"}));
  EXPECT_EQ(Run(set, {"c", "\"\"", "\"1\""}), TLines({"Setting '' does not exist", "failed"}));
}

TEST_F(TClassifierCommands, OtherVariablesAndParametersAreRefused) {
  auto image = std::make_unique<TVarImage>();
  image->SetName("image");
  variables.Add(std::move(image));
  const TLines noClassifier = {"Parameter 1 is not of type 'classifier'", "failed"};
  EXPECT_EQ(Run(set, {"image", "\"kernel\"", "\"rbf\""}), noClassifier);
  EXPECT_EQ(Run(get, {"image"}), noClassifier);
  EXPECT_EQ(Run(get, {"x"}), TLines({"Parameter 1 (x) is an unknown variable", "failed"}));
  EXPECT_EQ(Run(get, {}), TLines({"Function needs 1 to 2 parameters", "failed"}));
  EXPECT_EQ(Run(set, {"image", "\"kernel\""}), TLines({"Function needs 3 parameters", "failed"}));
  EXPECT_EQ(Run(create, {"svm"}), TLines({"Parameter 1 (svm) is not of type 'string', use syntax \"...\"", "failed"}));
  EXPECT_EQ(Run(create, {"\"svm\""}),
            TLines({"This function needs a destination variable - function not executed", "failed"}));
}
