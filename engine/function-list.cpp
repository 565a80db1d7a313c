#include "engine/function-list.h"

#include <algorithm>

#include <boost/bind/bind.hpp>

#include "classifiers/function-create-classifier.h"
#include "classifiers/function-get-classifier-setting.h"
#include "classifiers/function-set-classifier-setting.h"
#include "concepts/function-display-visual-concept-locations.h"
#include "concepts/function-find-visual-concept-locations.h"
#include "concepts/function-learn-visual-concept.h"
#include "concepts/function-update-visual-concept-tags.h"
#include "engine/function-execute-script.h"
#include "engine/function-reset.h"
#include "features/function-load-feature.h"
#include "features/function-remove-feature.h"
#include "features/function-save-feature.h"
#include "features/function-update-feature.h"
#include "gui/function-display-image.h"
#include "gui/function-display-index-map.h"
#include "gui/function-display-index.h"
#include "images/function-load-database.h"
#include "images/function-load-image.h"
#include "retrieval/function-evaluate-index.h"
#include "retrieval/function-load-mir-flickr-tags.h"
#include "retrieval/function-search-image.h"
#include "retrieval/function-search-tags.h"
#include "segmentation/function-segment-image.h"

TFunctionList::TFunctionList() {
  // The order of the help list.
  functions.push_back(std::make_unique<TFunctionLoadImage>());
  functions.push_back(std::make_unique<TFunctionLoadDatabase>());
  functions.push_back(std::make_unique<TFunctionDisplayImage>());
  functions.push_back(std::make_unique<TFunctionUpdateFeature>());
  functions.push_back(std::make_unique<TFunctionSearchImage>());
  functions.push_back(std::make_unique<TFunctionLoadFeature>());
  functions.push_back(std::make_unique<TFunctionSaveFeature>());
  functions.push_back(std::make_unique<TFunctionDisplayIndex>());
  functions.push_back(std::make_unique<TFunctionDisplayIndexMap>());
  functions.push_back(std::make_unique<TFunctionLearnVisualConcept>());
  functions.push_back(std::make_unique<TFunctionFindVisualConceptLocations>());
  functions.push_back(std::make_unique<TFunctionDisplayVisualConceptLocations>());
  functions.push_back(std::make_unique<TFunctionUpdateVisualConceptTags>());
  functions.push_back(std::make_unique<TFunctionSearchTags>());
  functions.push_back(std::make_unique<TFunctionSegmentImage>());
  functions.push_back(std::make_unique<TFunctionLoadMirFlickrTags>());
  functions.push_back(std::make_unique<TFunctionExecuteScript>());
  functions.push_back(std::make_unique<TFunctionEvaluateIndex>());
  functions.push_back(std::make_unique<TFunctionRemoveFeature>());
  functions.push_back(std::make_unique<TFunctionCreateClassifier>());
  functions.push_back(std::make_unique<TFunctionGetClassifierSetting>());
  functions.push_back(std::make_unique<TFunctionSetClassifierSetting>());
  functions.push_back(std::make_unique<TFunctionReset>());
  for (const auto& function : functions) {
    // Bound to the list, which asks for the controller's output at each line: that is set later.
    function->SetOutput(boost::bind(&TFunctionList::Print, this, boost::placeholders::_1));
    function->SetCommand(boost::bind(&TFunctionList::ExecuteCommand, this, boost::placeholders::_1));
  }
}

TFunctionList::~TFunctionList() = default;

TFunction* TFunctionList::Find(const std::string& name) const {
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
