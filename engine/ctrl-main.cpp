#include "engine/ctrl-main.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <utility>

#include <boost/bind/bind.hpp>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier-types.h"
#include "engine/command-history.h"
#include "engine/command-parser.h"
#include "engine/function-list.h"
#include "engine/function.h"
#include "engine/parsed-command.h"
#include "engine/var-list.h"
#include "engine/var.h"
#include "features/feature-list.h"
#include "gui/main-window.h"
#include "images/var-image.h"
#include "segmentation/segmentation-methods.h"

namespace {

constexpr const char* kHistoryFile = "CommandHistory.txt";
constexpr const char* kFeatureDirectory = "FeatureStorage";
constexpr std::size_t kMaxHistory = 25;

}  // namespace

TCtrlMain::TCtrlMain(MainWindow* window, const TOutputObserver& observer)
    : window(window),
      observer(observer),
      parser(std::make_unique<TCommandParser>()),
      history(std::make_unique<TCommandHistory>()),
      varList(std::make_unique<TVarList>()),
      functionList(std::make_unique<TFunctionList>()),
      featureList(std::make_unique<TFeatureList>()),
      classifierList(std::make_unique<TClassifierList>()) {
  window->OnKeyUp = boost::bind(&TCtrlMain::PreviousCommand, this);
  window->OnKeyDown = boost::bind(&TCtrlMain::NextCommand, this);
  window->OnReturnPressed = boost::bind(&TCtrlMain::OnCommandEntered, this);
  const auto print = boost::bind(&TCtrlMain::PrintLine, this, boost::placeholders::_1);
  parser->SetOutput(print);
  varList->SetOutput(print);
  functionList->SetOutput(print);
  functionList->SetCommand(boost::bind(&TCtrlMain::ExecuteCommand, this, boost::placeholders::_1));
  history->Load(kHistoryFile);
  functionList->SetVarList(varList.get());
  functionList->SetFeatureList(featureList.get());
  functionList->SetClassifierList(classifierList.get());
  for (const auto& feature : featureList->GetFeatures()) {
    window->AddFeature(feature->GetName());
  }
  for (const TClassifierType& type : ClassifierTypes()) {
    window->AddClassifier(type.name);
  }
  for (const std::string_view method : {kGridMethod, kSiftMethod}) {
    window->AddSegmentationMethod(std::string(method));
  }
  if (!base::MakeDirectory(kFeatureDirectory)) {
    PrintLine(FormatString("Directory '%s' cannot be created", kFeatureDirectory));
  }
  for (const std::string& refusal : featureList->GetRefusals()) {
    PrintLine(refusal);
  }
}

TCtrlMain::~TCtrlMain() {
  history->Save(kHistoryFile);
  // The window outlives this object and must not call into it.
  window->OnKeyUp.clear();
  window->OnKeyDown.clear();
  window->OnReturnPressed.clear();
}

void TCtrlMain::AddOutput(const std::string& text) {
  if (observer) {
    observer(text);
  }
  window->AddOutput(text);
}

void TCtrlMain::PrintLine(const std::string& line) {
  AddOutput("  " + line + "\n");
}

void TCtrlMain::AddToHistory(const std::string& line) {
  auto& entries = history->entries;
  entries.insert(entries.begin(), line);
  // A file edited by hand may have brought more.
  entries.resize(std::min(entries.size(), kMaxHistory));
  historyIndex = -1;
}

void TCtrlMain::ExecuteCommand(const std::string& line) {
  AddOutput("> " + line + "\n");
  AddToHistory(line);
  if (!RunLine(line)) {
    ++failedLines;
  }
}

bool TCtrlMain::RunLine(const std::string& line) {
  const THelpRequest help = ProcessHelp(line);
  if (help != THelpRequest::kNone) {
    return help == THelpRequest::kAnswered;
  }
  const auto parsed = parser->Parse(line);
  if (!parsed) {
    window->ClearCommandText();
    return false;
  }
  bool succeeded = false;
  try {
    succeeded = RunParsed(*parsed);
  } catch (const std::exception& failure) {
    // What a library throws, an allocation that fails included, ends the command and not the program.
    PrintLine(failure.what());
    PrintLine("Function failed");
    if (parsed->Type == "assignfunction") {
      varList->Remove(parsed->Destination);
    }
  }
  UpdateVariables();
  window->ClearCommandText();
  return succeeded;
}

bool TCtrlMain::RunParsed(const TParsedCommand& parsed) {
  if (parsed.Type == "assign") {
    return RunAssign(parsed);
  }
  return parsed.Type == "assignfunction" ? RunAssignFunction(parsed) : RunFunction(parsed);
}

void TCtrlMain::OnCommandEntered() {
  pendingLines.push_back(window->GetCommandText());
  if (isRunning) {
    return;
  }
  isRunning = true;
  while (!pendingLines.empty()) {
    const std::string line = std::move(pendingLines.front());
    pendingLines.pop_front();
    ExecuteCommand(line);
  }
  isRunning = false;
}

void TCtrlMain::PreviousCommand() {
  if (historyIndex < static_cast<int>(history->entries.size()) - 1) {
    ++historyIndex;
    window->SetCommandText(history->entries[static_cast<std::size_t>(historyIndex)]);
  }
}

void TCtrlMain::NextCommand() {
  if (historyIndex > 0) {
    --historyIndex;
    window->SetCommandText(history->entries[static_cast<std::size_t>(historyIndex)]);
  } else if (historyIndex == 0) {
    historyIndex = -1;
    window->ClearCommandText();
  }
}

void TCtrlMain::SetSeed(std::uint32_t seed) {
  classifierList->SetSeed(seed);
  std::srand(seed);
}

void TCtrlMain::UpdateVariables() {
  window->ClearVariables();
  for (const auto& variable : varList->GetVariables()) {
    const auto* image = dynamic_cast<const TVarImage*>(variable.get());
    window->AddVariable(variable->GetName(), variable->GetType(), variable->GetDescription(),
                        image != nullptr ? image->GetFilename() : std::string());
  }
}

TCtrlMain::THelpRequest TCtrlMain::ProcessHelp(const std::string& line) {
  const std::string_view text = base::Trim(line);
  constexpr std::string_view kHelp = "help";
  if (text == kHelp) {
    PrintLine("Available functions:");
    for (const auto& function : functionList->GetFunctions()) {
      PrintLine("- " + function->GetName());
    }
    return THelpRequest::kAnswered;
  }
  if (!text.starts_with("help ")) {
    return THelpRequest::kNone;
  }
  const std::string name(text.substr(kHelp.size() + 1));
  const TFunction* function = functionList->Find(name);
  if (function == nullptr) {
    PrintLine(FormatString("Function '%s' not found", name.c_str()));
    return THelpRequest::kUnknownName;
  }
  function->ShowHelp();
  return THelpRequest::kAnswered;
}

bool TCtrlMain::RunFunction(const TParsedCommand& parsed) {
  TFunction* function = functionList->Find(parsed.Function);
  if (function == nullptr) {
    PrintLine(FormatString("Function '%s' not found", parsed.Function.c_str()));
    return false;
  }
  if (function->ReturnsValue()) {
    PrintLine("Function returns a value, but no return variable given - function not executed");
    return false;
  }
  if (!function->CheckParameters(parsed.Parameters)) {
    return false;
  }
  if (!function->Execute(parsed.Parameters)) {
    PrintLine("Function failed");
    return false;
  }
  return true;
}

bool TCtrlMain::RunAssignFunction(const TParsedCommand& parsed) {
  TFunction* function = functionList->Find(parsed.Function);
  if (function == nullptr) {
    PrintLine(FormatString("Function '%s' not found", parsed.Function.c_str()));
    return false;
  }
  if (!function->ReturnsValue()) {
    PrintLine("Function does not return a value - function not executed");
    return false;
  }
  if (!function->CheckParameters(parsed.Parameters)) {
    return false;
  }
  TVar* destination = varList->Find(parsed.Destination);
  if (destination != nullptr && destination->GetType() != function->GetReturnType()) {
    PrintLine("Destination variable already exists but has a different type, replacing it");
    varList->Remove(parsed.Destination);
    destination = nullptr;
  }
  if (destination == nullptr) {
    destination = AddVariable(function->CreateReturnVariable(), parsed.Destination);
  }
  if (!function->ExecuteWithReturn(*destination, parsed.Parameters)) {
    varList->Remove(parsed.Destination);
    PrintLine("Function failed");
    return false;
  }
  return true;
}

bool TCtrlMain::RunAssign(const TParsedCommand& parsed) {
  const TVar* source = varList->Find(parsed.Source);
  TVar* destination = varList->Find(parsed.Destination);
  if (source == nullptr) {
    PrintLine(FormatString("Variable '%s' not found", parsed.Source.c_str()));
    return false;
  }
  if (destination != nullptr && destination->GetType() != source->GetType()) {
    PrintLine("Destination variable has a different type, replacing it");
    varList->Remove(parsed.Destination);
    destination = nullptr;
  }
  if (destination == nullptr) {
    destination = AddVariable(source->CreateNew(), parsed.Destination);
  }
  destination->Assign(source);
  return true;
}

TVar* TCtrlMain::AddVariable(std::unique_ptr<TVar> variable, const std::string& name) {
  TVar* added = variable.get();
  added->SetName(name);
  varList->Add(std::move(variable));
  return added;
}
