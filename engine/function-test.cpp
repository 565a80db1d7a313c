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
  explicit TVarProbe(const std::string& theName, TLines* theDeaths = nullptr) : TVar("probe"), deaths(theDeaths) {
    SetName(theName);
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
  explicit TFunctionProbe(const TCommandFacts& facts) : TFunction(facts) {
    SetOutput([this](const std::string& line) { lines.push_back(line); });
    SetVarList(&variables);
    variables.Add(std::make_unique<TVarProbe>("x"));
  }
  TFunctionProbe(const TLines& theKinds, int optional) : TFunctionProbe({.kinds = theKinds, .optional = optional}) {}

  TVarList variables;
  TLines lines;
};

TLines Names(const TVarList& list) {
  TLines names;
  for (const auto& variable : list.GetVariables()) {
    names.push_back(variable->GetName());
  }
  return names;
}

}  // namespace

TEST(TFunction, ParametersAreCountedFirst) {
  const struct {
    std::size_t known;
    int optional;
    std::size_t given;
    const char* message;
  } cases[] = {{0, 0, 1, "Function does not take parameters"}, {1, 0, 0, "Function needs 1 parameter"},
               {1, 0, 2, "Function needs 1 parameter"},        {2, 0, 1, "Function needs 2 parameters"},
               {3, 0, 0, "Function needs 3 parameters"},       {2, 1, 0, "Function needs 1 to 2 parameters"},
               {2, 1, 3, "Function needs 1 to 2 parameters"},  {1, 1, 2, "Function needs 0 to 1 parameters"}};
  for (const auto& [known, optional, given, message] : cases) {
    TFunctionProbe function(TLines(known, "string"), optional);
    EXPECT_FALSE(function.CheckParameters(TLines(given, "y")));
    EXPECT_EQ(function.lines, TLines{message});
  }
}

TEST(TFunction, EveryParameterIsCheckedByItsKind) {
  const std::string unknown = " is an unknown variable";
  const std::string noText = " is not of type 'string', use syntax \"...\"";
  const std::string noTruth = " is not of type 'boolean', use true or false";
  const struct {
    TLines kinds, params, messages;
  } cases[] = {{{}, {}, {}},
               {{"variable", "string", "string"}, {"x", "\"\"", "\""}, {}},
               {{"boolean", "boolean", "boolean"}, {"true", "false"}, {}},
               {{"variable", "boolean"}, {"x"}, {}},
               {{"variable", "variable"}, {"X", ""}, {"Parameter 1 (X)" + unknown, "Parameter 2 ()" + unknown}},
               {{"string", "string"}, {"a.jpg", "\"a"}, {"Parameter 1 (a.jpg)" + noText, "Parameter 2 (\"a)" + noText}},
               {{"string", "string"}, {"a\"", ""}, {"Parameter 1 (a\")" + noText, "Parameter 2 ()" + noText}},
               {{"variable", "string"}, {"x", "%s%n"}, {"Parameter 2 (%s%n)" + noText}},
               {{"variable", "string", "boolean"}, {"y", "\"\""}, {"Parameter 1 (y)" + unknown}},
               {{"boolean", "boolean"}, {"maybe", ""}, {"Parameter 1 (maybe)" + noTruth, "Parameter 2 ()" + noTruth}}};
  for (const auto& [kinds, params, messages] : cases) {
    TFunctionProbe function(kinds, static_cast<int>(kinds.size() - params.size()));
    EXPECT_EQ(function.CheckParameters(params), messages.empty());
    EXPECT_EQ(function.lines, messages);
  }
}

TEST(TFunction, WithoutOverridesItTakesAnythingAndRunsNothing) {
  TFunctionProbe function({.takesAnything = true});
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

TEST(TVarList, VariablesGoByTheirOwnNamesOrInOrderWithTheStore) {
  const std::string name = "a name that is too long for a small string";
  TLines deaths;
  {
    TVarList list;
    for (const std::string& each : {name, std::string("c"), std::string("b")}) {
      list.Add(std::make_unique<TVarProbe>(each, &deaths));
    }
    list.Remove(list.GetVariables().front()->GetName());
    EXPECT_EQ(deaths, TLines{name});
  }
  EXPECT_EQ(deaths, (TLines{name, "c", "b"}));
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
