#include "engine/function-list.h"

#include <algorithm>

#include <boost/bind/bind.hpp>

#include "classifiers/commands.h"
#include "concepts/commands.h"
#include "engine/commands.h"
#include "engine/function.h"
#include "features/commands.h"
#include "gui/commands.h"
#include "images/commands.h"
#include "retrieval/commands.h"
#include "segmentation/commands.h"

namespace {

// A table, and no objects that register themselves: the linker leaves out those parts of a static library that nobody
// mentions. A new command is an entry here and a factory that the commands.h of its part declares.
/// One factory a command, in the order of the help list.
constexpr std::unique_ptr<TFunction> (*kFactories[])() = {
    MakeLoadImage,
    MakeLoadDatabase,
    MakeDisplayImage,
    MakeUpdateFeature,
    MakeSearchImage,
    MakeLoadFeature,
    MakeSaveFeature,
    MakeDisplayIndex,
    MakeDisplayIndexMap,
    MakeLearnVisualConcept,
    MakeFindVisualConceptLocations,
    MakeDisplayVisualConceptLocations,
    MakeUpdateVisualConceptTags,
    MakeSearchTags,
    MakeSegmentImage,
    MakeLoadMirFlickrTags,
    MakeExecuteScript,
    MakeEvaluateIndex,
    MakeRemoveFeature,
    MakeCreateClassifier,
    MakeGetClassifierSetting,
    MakeSetClassifierSetting,
    MakeReset,
};

}  // namespace

TFunctionList::TFunctionList() {
  for (const auto make : kFactories) {
    const auto& function = functions.emplace_back(make());
    // Bound to the list, which asks for the controller's output at each line: that is set later.
    function->SetOutput(boost::bind(&TFunctionList::Print, this, boost::placeholders::_1));
    function->SetCommand(boost::bind(&TFunctionList::ExecuteCommand, this, boost::placeholders::_1));
  }
}

TFunctionList::~TFunctionList() = default;

TFunction* TFunctionList::Find(const std::string& name) const {
  // The parser has folded the name; a "help" line comes here as it was typed, so that its case counts.
  const auto found = std::find_if(functions.begin(), functions.end(),
                                  [&](const auto& function) { return function->GetName() == name; });
  return found == functions.end() ? nullptr : found->get();
}

void TFunctionList::SetVarList(TVarList* list) {
  for (const auto& function : functions) {
    function->SetVarList(list);
  }
}

void TFunctionList::SetFeatureList(const TFeatureList* list) {
  for (const auto& function : functions) {
    function->SetFeatureList(list);
  }
}

void TFunctionList::SetClassifierList(const TClassifierList* list) {
  for (const auto& function : functions) {
    function->SetClassifierList(list);
  }
}

void TFunctionList::SetWork(TWork* work) {
  for (const auto& function : functions) {
    function->SetWork(work);
  }
}

void TFunctionList::Print(const std::string& line) const {
  if (output) {
    output(line);
  }
}

void TFunctionList::ExecuteCommand(const std::string& line) const {
  if (command) {
    command(line);
  }
}
