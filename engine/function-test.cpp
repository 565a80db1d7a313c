#include "engine/function.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "engine/var.h"

namespace {

using TLines = std::vector<std::string>;

/// A variable that tells when it dies, and can speak.
class TVarProbe : public TVar {
 public:
  explicit TVarProbe(const std::string& name, TLines* deaths = nullptr) : TVar("probe"), deaths(deaths) {
    SetName(name);
  }
  ~TVarProbe() override {
    if (deaths != nullptr) {
      deaths->push_back(GetName());
    }
  }
  std::unique_ptr<TVar> CreateNew() const override { return std::make_unique<TVarProbe>(""); }
  void Assign(const TVar* /*source*/) override {}
  std::string GetDescription() const override { return "a probe"; }

  void Say(const std::string& line) const { Print(line); }

 private:
  TLines* deaths;
};

/// A command with the declarations that a test gives it, and a record of what it prints.
class TFunctionProbe : public TFunction {
 public:
  TFunctionProbe() {
    SetOutput([this](const std::string& line) { lines.push_back(line); });
    SetVarList(&variables);
    variables.Add(std::make_unique<TVarProbe>("x"));
  }
  TFunctionProbe(TLines kinds, int optional) : TFunctionProbe() { SetParameters(std::move(kinds), optional); }

  using TFunction::SetHelp;

  TVarList variables;
  TLines lines;
};

struct TCheck {
  TLines kinds;
  int optional;
  TLines params;
  TLines messages;
};

TLines Names(const TVarList& list) {
  TLines names;
  for (const auto& variable : list.GetVariables()) {
    names.push_back(variable->GetName());
  }
  return names;
}

}  // namespace

TEST(TFunction, ParametersAreCheckedByNumberThenByKind) {
  const std::string unknown = "Parameter 1 (y) is an unknown variable";
  const std::vector<TCheck> checks = {
      {{}, 0, {}, {}},
      {{}, 0, {"1"}, {"Function does not take parameters"}},
      {{"string"}, 0, {}, {"Function needs 1 parameter"}},
      {{"string"}, 0, {"\"a", "b\""}, {"Function needs 1 parameter"}},
      {{"variable", "string"}, 0, {"y"}, {"Function needs 2 parameters"}},
      {{"variable", "string", "string"}, 0, {}, {"Function needs 3 parameters"}},
      {{"variable", "boolean"}, 1, {}, {"Function needs 1 to 2 parameters"}},
      {{"variable", "boolean"}, 1, {"y", "z", ""}, {"Function needs 1 to 2 parameters"}},
      {{"string"}, 1, {"a", "b"}, {"Function needs 0 to 1 parameters"}},
      {{"variable"}, 0, {"x"}, {}},
      {{"variable"}, 0, {"y"}, {unknown}},
      {{"variable"}, 0, {"X"}, {"Parameter 1 (X) is an unknown variable"}},
      {{"variable"}, 0, {""}, {"Parameter 1 () is an unknown variable"}},
      {{"string"}, 0, {"\"\""}, {}},
      {{"string"}, 0, {"\""}, {}},
      {{"string"}, 0, {"a.jpg"}, {"Parameter 1 (a.jpg) is not of type 'string', use syntax \"...\""}},
      {{"string"}, 0, {"\"a"}, {"Parameter 1 (\"a) is not of type 'string', use syntax \"...\""}},
      {{"string"}, 0, {"a\""}, {"Parameter 1 (a\") is not of type 'string', use syntax \"...\""}},
      {{"string"}, 0, {""}, {"Parameter 1 () is not of type 'string', use syntax \"...\""}},
      {{"string"}, 0, {"%s%n"}, {"Parameter 1 (%s%n) is not of type 'string', use syntax \"...\""}},
      {{"boolean", "boolean"}, 0, {"true", "false"}, {}},
      {{"variable", "boolean"}, 1, {"x"}, {}},
      {{"variable", "boolean"}, 1, {"y"}, {unknown}},
      {{"variable", "boolean"}, 1, {"x", ""}, {"Parameter 2 () is not of type 'boolean', use true or false"}},
      {{"variable", "boolean"},
       1,
       {"y", "maybe"},
       {unknown, "Parameter 2 (maybe) is not of type 'boolean', use true or false"}},
      {{"variable", "variable", "string"},
       0,
       {"y", "x", "s"},
       {unknown, "Parameter 3 (s) is not of type 'string', use syntax \"...\""}},
  };
  for (const TCheck& check : checks) {
    TFunctionProbe function(check.kinds, check.optional);
    EXPECT_EQ(function.CheckParameters(check.params), check.messages.empty());
    EXPECT_EQ(function.lines, check.messages);
  }
}

TEST(TFunction, WithoutOverridesItTakesAnythingAndRunsNothing) {
  TFunctionProbe function;
  EXPECT_TRUE(function.CheckParameters({"1", "", "\"", "y"}));
  EXPECT_EQ(function.lines, TLines());
  EXPECT_EQ(function.CreateReturnVariable(), nullptr);
  EXPECT_FALSE(function.ReturnsValue());
  EXPECT_EQ(function.GetName() + function.GetReturnType(), "");
  function.ShowHelp();
  EXPECT_FALSE(function.Execute({}));
  TVarProbe variable("v");
  EXPECT_FALSE(function.ExecuteWithReturn(variable, {}));
  EXPECT_EQ(function.lines, (TLines{"No help available for this function",
                                    "This function needs a destination variable - function not executed",
                                    "This function does not need a destination variable - function not executed"}));
}

TEST(TFunction, HelpIsPrintedLineByLine) {
  TFunctionProbe function;
  function.SetHelp({"Name:        Probe", "Syntax:      probe()"});
  function.ShowHelp();
  EXPECT_EQ(function.lines, (TLines{"Name:        Probe", "Syntax:      probe()"}));
  function.SetOutput({});
  function.ShowHelp();
  EXPECT_EQ(function.lines.size(), 2u);
}

TEST(TFunction, StrippingQuotesTakesTheFirstAndTheLastCharacter) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"\"c:\\a b.jpg\"", "c:\\a b.jpg"}, {"\"\"", ""}, {"\"a\"b\"", "a\"b"}, {"\"", ""}, {"", ""}, {"xay", "a"}};
  for (const auto& [parameter, stripped] : cases) {
    EXPECT_EQ(TFunction::StripQuotes(parameter), stripped);
  }
}

TEST(TVarList, VariablesKeepTheOrderOfAddition) {
  TLines deaths;
  TVarList list;
  EXPECT_EQ(list.Find("a"), nullptr);
  list.Remove("a");
  for (const char* name : {"a", "b", "c", "b"}) {
    list.Add(std::make_unique<TVarProbe>(name, &deaths));
  }
  EXPECT_EQ(list.Find("b"), list.GetVariables()[1].get());
  EXPECT_EQ(list.Find("B"), nullptr);
  EXPECT_EQ(list.Find(""), nullptr);
  list.Remove("d");
  EXPECT_EQ(Names(list), (TLines{"a", "b", "c", "b"}));
  list.Remove("b");
  EXPECT_EQ(Names(list), (TLines{"a", "c", "b"})) << "the first of two goes";
  list.Remove("a");
  list.Add(std::make_unique<TVarProbe>("a", &deaths));
  EXPECT_EQ(Names(list), (TLines{"c", "b", "a"}));
  EXPECT_EQ(deaths, (TLines{"b", "a"}));
}

TEST(TVarList, AVariableCanBeRemovedByItsOwnName) {
  TLines deaths;
  TVarList list;
  list.Add(std::make_unique<TVarProbe>("a name that is too long for a small string", &deaths));
  list.Add(std::make_unique<TVarProbe>("b", &deaths));
  while (!list.GetVariables().empty()) {
    list.Remove(list.GetVariables().front()->GetName());
  }
  EXPECT_EQ(deaths, (TLines{"a name that is too long for a small string", "b"}));
}

TEST(TVarList, TheStoreEndsItsVariablesInOrder) {
  TLines deaths;
  {
    TVarList list;
    list.Add(std::make_unique<TVarProbe>("b", &deaths));
    list.Add(std::make_unique<TVarProbe>("a", &deaths));
  }
  EXPECT_EQ(deaths, (TLines{"b", "a"}));
}

TEST(TVarList, VariablesSpeakThroughTheOutputThatTheStoreHasNow) {
  TVarList list;
  auto owned = std::make_unique<TVarProbe>("a");
  const TVarProbe& variable = *owned;
  variable.Say("in no store");
  list.Add(std::move(owned));
  variable.Say("no output yet");
  TLines lines;
  list.SetOutput([&lines](const std::string& line) { lines.push_back(line); });
  variable.Say("heard");
  list.Print("of the store's own");
  EXPECT_EQ(lines, (TLines{"heard", "of the store's own"}));
}
