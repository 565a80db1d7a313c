// The three commands on classifiers.
#include <gtest/gtest.h>

#include "tests/support/workbench.h"

namespace {

class TClassifierCommands : public testing::Test {
 protected:
  TClassifierCommands() {
    for (const char* line :
         {"a = createclassifier(\"nearest\")", "b = createclassifier(\"neural\")", "c = createclassifier(\"svm\")"}) {
      EXPECT_EQ(workbench.Run(line), "") << line;
    }
  }

  TWorkbench workbench;
};

TEST_F(TClassifierCommands, CreateKnowsThreeTypesAndStartsAnew) {
  const std::vector<std::string> descriptions = {"Nearest neighbor", "Neural network",
                                                 "Support vector machine, kernel: rbf"};
  EXPECT_EQ(workbench.GetColumn(2), descriptions);
  for (const char* type : {"knn", ""}) {
    EXPECT_EQ(workbench.Run("d = createclassifier(\"" + std::string(type) + "\")"),
              "Unknown classifier type\nFunction failed\n");
  }
  workbench.Run("setclassifiersetting(c, \"kernel\", \"linear\")");
  workbench.Run("c = createclassifier(\"svm\")");
  EXPECT_EQ(workbench.Run("getclassifiersetting(c, \"kernel\")"), "kernel = rbf\n");
}

TEST_F(TClassifierCommands, SettingsAreShownInOrderAndTakeAnyText) {
  const std::string all = "3 setting available: \nhiddenlayers = 1\nmaxerror = 0.0000001\nmaxiterations = 1000\n";
  EXPECT_EQ(workbench.Run("getclassifiersetting(a)"), "0 setting available: \n");
  EXPECT_EQ(workbench.Run("getclassifiersetting(b)"), all);
  EXPECT_EQ(workbench.Run("getclassifiersetting(b, \"\")"), all);
  EXPECT_EQ(workbench.Run("getclassifiersetting(b, \"kernel\")"), "kernel = \n");
  EXPECT_EQ(workbench.Run("setclassifiersetting(c, \"kernel\", \"sigmoid\")"), "");
  EXPECT_EQ(workbench.GetColumn(2).back(), "Support vector machine, kernel: sigmoid");
  EXPECT_EQ(workbench.Run("setclassifiersetting(c, \"kernel\", \"\")"), "");
  EXPECT_EQ(workbench.Run("getclassifiersetting(c)"), "1 setting available: \nkernel = \n");
  EXPECT_EQ(workbench.Run("setclassifiersetting(c, \"nosuch\", \"1\")"),
            "Setting 'nosuch' does not exist\nFunction failed\n");
  EXPECT_EQ(workbench.Run("setclassifiersetting(c, \"\", \"1\")"), "Setting '' does not exist\nFunction failed\n");
}

TEST_F(TClassifierCommands, OtherVariablesAndParametersAreRefused) {
  MakePicture("im.png", 1, 1, qRgb(0, 0, 0));
  workbench.Run("image = loadimage(\"im.png\")");
  const struct {
    const char* line;
    const char* answer;
  } kRefused[] = {
      {"setclassifiersetting(image, \"kernel\", \"rbf\")",
       "Parameter 1 is not of type 'classifier'\nFunction failed\n"},
      {"getclassifiersetting(image)", "Parameter 1 is not of type 'classifier'\nFunction failed\n"},
      {"getclassifiersetting(x)", "Parameter 1 (x) is an unknown variable\n"},
      {"getclassifiersetting()", "Function needs 1 to 2 parameters\n"},
      {"setclassifiersetting(image, \"kernel\")", "Function needs 3 parameters\n"},
      {"d = createclassifier(svm)", "Parameter 1 (svm) is not of type 'string', use syntax \"...\"\n"},
      {"createclassifier(\"svm\")", "Function returns a value, but no return variable given - function not executed\n"},
  };
  for (const auto& [line, answer] : kRefused) {
    EXPECT_EQ(workbench.Run(line), answer) << line;
  }
}

}  // namespace
