#include "engine/function-list.h"

#include <algorithm>

#include <boost/bind/bind.hpp>

#include "engine/command-factories.h"

TFunctionList::TFunctionList() {
  // In the order of the help list. No objects that register themselves: the linker leaves out those parts of a static
  // library that nobody mentions.
  for (const TFunctionFactory make : {kMakeLoadImage,
                                      kMakeLoadDatabase,
                                      kMakeDisplayImage,
                                      kMakeUpdateFeature,
                                      kMakeSearchImage,
                                      kMakeLoadFeature,
                                      kMakeSaveFeature,
                                      kMakeDisplayIndex,
                                      kMakeDisplayIndexMap,
                                      kMakeLearnVisualConcept,
                                      kMakeFindVisualConceptLocations,
                                      kMakeDisplayVisualConceptLocations,
                                      kMakeUpdateVisualConceptTags,
                                      kMakeSearchTags,
                                      kMakeSegmentImage,
                                      kMakeLoadMirFlickrTags,
                                      kMakeExecuteScript,
                                      kMakeEvaluateIndex,
                                      kMakeRemoveFeature,
                                      kMakeCreateClassifier,
                                      kMakeGetClassifierSetting,
                                      kMakeSetClassifierSetting,
                                      kMakeReset}) {
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
