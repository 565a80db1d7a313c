#include "engine/ctrl-main.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include <boost/bind/bind.hpp>

#include "base/abandoned-files.h"
#include "base/at-end.h"
#include "base/console.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "classifiers/classifier-list.h"
#include "classifiers/classifier-types.h"
#include "engine/command-history.h"
#include "engine/command-parser.h"
#include "engine/completion.h"
#include "engine/function-list.h"
#include "engine/function.h"
#include "engine/parsed-command.h"
#include "engine/var-list.h"
#include "engine/var.h"
#include "features/feature-list.h"
#include "features/feature-store.h"
#include "segmentation/segmentation-methods.h"

namespace {

constexpr const char* kHistoryFile = "CommandHistory.txt";
// Lines. Those of scripts count too, so that a long script leaves its last ones.
constexpr std::size_t kMaxHistory = 25;
constexpr const char* kFunctionFailed = "Function failed";

/// How long the view may stand still while a command is under way: well below the tenth of a second at which people
/// begin to notice.
constexpr std::chrono::milliseconds kDrawInterval(50);

/// The number with a comma between thousands.
std::string GroupThousands(std::size_t number) {
  std::string digits = std::to_string(number);
  // By hand, since a locale's separator would make the title differ from machine to machine.
  for (std::size_t end = digits.size(); end > 3; end -= 3) {
    digits.insert(end - 3, 1, ',');
  }
  return digits;
}

/// Calls `run` and returns what it returned. What a library throws, an allocation that fails included, ends the command
/// and not the program: its text goes to `print`, and the result is false.
template <typename TRun, typename TPrint>
bool RunGuarded(const TRun& run, const TPrint& print) {
  try {
    return run();
  } catch (const std::bad_alloc&) {
    // A photograph too large for the memory there is: by the time it gets here its blocks are free again, so that the
    // line can be printed.
    print("Out of memory");
  } catch (const std::exception& failure) {
    print(failure.what());
  }
  return false;
}

}  // namespace

TCtrlMain::TCtrlMain(TView& theView, const std::vector<std::string>& pluginDirectories)
    : view(theView),
      parser(std::make_unique<TCommandParser>()),
      history(std::make_unique<TCommandHistory>()),
      varList(std::make_unique<TVarList>()),
      functionList(std::make_unique<TFunctionList>()),
      featureList(std::make_unique<TFeatureList>(pluginDirectories)),
      classifierList(std::make_unique<TClassifierList>()) {
  theView.SetListener(this);
  const auto print = boost::bind(&TCtrlMain::PrintLine, this, boost::placeholders::_1);
  parser->SetOutput(print);
  varList->SetOutput(print);
  functionList->SetOutput(print);
  // The way back: executescript runs lines through the same door as the user's.
  functionList->SetCommand(boost::bind(&TCtrlMain::ExecuteCommand, this, boost::placeholders::_1));
  functionList->SetWork(this);
  // A first start has no such file, and an empty history.
  history->Load(kHistoryFile);
  functionList->SetVarList(varList.get());
  functionList->SetFeatureList(featureList.get());
  functionList->SetClassifierList(classifierList.get());
  for (const auto& feature : featureList->GetFeatures()) {
    theView.AddFeature(feature->GetName());
  }
  for (const TClassifierType& type : ClassifierTypes()) {
    theView.AddClassifier(type.name);
  }
  for (const std::string_view method : {kGridMethod, kSiftMethod}) {
    theView.AddSegmentationMethod(std::string(method));
  }
  if (!base::MakeDirectory(kFeatureDirectory)) {
    PrintLine(FormatString("Directory '%s' cannot be created", kFeatureDirectory));
  }
  hasLosses = !featureList->IsComplete();
  if (history->IsUnreadable()) {
    PrintLine(FormatString("%s could not be read and is left as it is", kHistoryFile));
  }
  base::RemoveAbandonedFiles(".");
  for (const std::string& refusal : featureList->GetRefusals()) {
    PrintLine(refusal);
  }
}

TCtrlMain::~TCtrlMain() {
  const auto save = [this] { return history->IsUnreadable() || history->Save(kHistoryFile); };
  if (!RunGuarded(save, [](const char* /*reason*/) {})) {
    // The output has ended, and a window is gone.
    std::fprintf(stderr, "File '%s' cannot be written\n", kHistoryFile);
  }
  // The view outlives this object and must not call into it.
  view.SetListener(nullptr);
}

void TCtrlMain::PrintLine(const std::string& line) {
  view.AddOutput("  " + line + "\n");
  lastPrinted = line;
}

void TCtrlMain::AddToHistory(const std::string& line) {
  auto& entries = history->entries;
  // A line feed would make two entries of one in the file.
  std::string entry = line;
  std::erase(entry, '\n');
  // Newest first: the up key walks towards larger indices.
  entries.insert(entries.begin(), std::move(entry));
  // A file edited by hand may have brought more.
  entries.resize(std::min(entries.size(), kMaxHistory));
  historyIndex = -1;
}

template <typename TRun>
void TCtrlMain::RunOutside(const TRun& run) {
  const auto runs = [&] {
    run();
    return true;
  };
  if (!RunGuarded(runs, [this](const char* reason) { PrintFailure(reason); })) {
    ++failedLines;
  }
}

void TCtrlMain::ExecuteCommand(const std::string& line) {
  Execute(line, TOrigin::kTyped);
}

void TCtrlMain::ExecuteScriptLine(const std::string& line, const std::string& script, std::size_t number) {
  RunOutside([&] {
    SetPosition(script, number);
    Execute(line, TOrigin::kTyped);
  });
}

void TCtrlMain::RunScript(base::TLineReader& reader, const std::string& script) {
  const auto lines = [&] {
    std::string line;
    for (std::size_t number = 1; !view.IsClosing() && reader.Next(line); ++number) {
      // Names the program that the system runs the file with (execve), and is no command.
      if (number == 1 && line.starts_with("#!")) {
        continue;
      }
      ExecuteScriptLine(line, script, number);
      if (isInterrupted) {
        PrintLine("Script interrupted");
        break;
      }
    }
    // Without a word, a script that was read in part would look like one that ran to its end.
    if (reader.HasFailed() && !base::Interrupted()) {
      ++failedLines;
      PrintLine(FormatString("Script '%s' cannot be read to its end", script.c_str()));
    }
  };
  RunOutside([&] { RunAsWork(lines); });
}

void TCtrlMain::Execute(const std::string& line, TOrigin origin) {
  // What belongs to a line but not to its command needs memory, too.
  RunOutside([&] { ExecuteAsWork(line, origin); });
}

void TCtrlMain::ExecuteAsWork(const std::string& line, TOrigin origin) {
  // The outermost line alone forgets an earlier wish to interrupt: inside of a script it must end all lines that are
  // still to come.
  if (underWay.empty()) {
    isInterrupted = false;
  }
  // Taken and cleared: a line that the next command runs by itself must not pass for a line of the script.
  underWay.push_back(std::exchange(nextPosition, {}));
  const base::TAtEnd popsPosition([this] { underWay.pop_back(); });
  lastPrinted.clear();
  failure.clear();
  view.BeginWork();
  const base::TAtEnd endsWork([this] {
    if (std::exchange(showsWork, false)) {
      const auto clear = [this] {
        view.ShowWork(std::string());
        return true;
      };
      // A view without memory for its title must not end the program from a destructor.
      RunGuarded(clear, [](const char* /*reason*/) {});
    }
    view.EndWork();
  });
  const auto runs = [&] {
    view.AddOutput("> " + line + "\n");
    AddToHistory(line);
    // Whoever watches sees what was asked for before it begins.
    view.ProcessEvents();
    return RunLine(line, origin);
  };
  if (!RunGuarded(runs, [this](const char* reason) { PrintFailure(reason); })) {
    ++failedLines;
    ReportFailedLine();
  }
}

void TCtrlMain::PrintFailure(const char* reason) noexcept {
  // Without memory for the very words there is nothing left to be done but to go on.
  RunGuarded(
      [&] {
        PrintLine(reason);
        return true;
      },
      [](const char* /*reason*/) {});
}

bool TCtrlMain::RunLine(const std::string& line, TOrigin origin) {
  const THelpRequest help = ProcessHelp(line);
  if (help != THelpRequest::kNone) {
    // Not for a line that a command runs: the command line holds that command.
    if (underWay.size() == 1) {
      view.SelectCommandText();
    }
    return help == THelpRequest::kAnswered;
  }
  const auto parsed = parser->Parse(line);
  const bool succeeded = parsed && RunParsed(*parsed, origin);
  if (parsed) {
    UpdateVariables();
  }
  view.SetCommandText(std::string());
  return succeeded;
}

bool TCtrlMain::RunParsed(const TParsedCommand& parsed, TOrigin origin) {
  if (parsed.Type == "assign") {
    return RunAssign(parsed);
  }
  return parsed.Type == "assignfunction" ? RunAssignFunction(parsed, origin) : RunFunction(parsed);
}

void TCtrlMain::RunFromView(TOrigin origin) {
  RunOutside([&] {
    // Even if nothing runs: there is one way for all lines, and their order is that of their arrival.
    pendingLines.push_back({view.GetCommandText(), origin});
    if (!isRunning) {
      RunAsWork([] {});
    }
  });
}

void TCtrlMain::RunAsWork(const boost::function<void()>& run) {
  isRunning = true;
  // One piece of work for all lines, so that what is typed meanwhile comes behind them.
  view.BeginWork();
  const base::TAtEnd atEnd([this] {
    isRunning = false;
    view.EndWork();
  });
  run();
  // A loop and no recursion: a user who types ahead must not cost stack.
  while (!pendingLines.empty() && !view.IsClosing()) {
    // Taken out first: the line may itself let events through and add others.
    const TPendingLine line = std::move(pendingLines.front());
    pendingLines.pop_front();
    Execute(line.text, line.origin);
  }
}

void TCtrlMain::PreviousCommand() {
  // As an int, since the bound of an empty history is -1, which a size without a sign would turn into the largest
  // number.
  if (historyIndex < static_cast<int>(history->entries.size()) - 1) {
    ++historyIndex;
    view.SetCommandText(history->entries[static_cast<std::size_t>(historyIndex)]);
  }
}

void TCtrlMain::NextCommand() {
  if (historyIndex > 0) {
    --historyIndex;
    view.SetCommandText(history->entries[static_cast<std::size_t>(historyIndex)]);
  } else if (historyIndex == 0) {
    historyIndex = -1;
    view.SetCommandText(std::string());
  }
}

void TCtrlMain::Interrupt() {
  isInterrupted = !underWay.empty();
}

TCompletion TCtrlMain::Complete(const std::string& before) const {
  return CompleteCommand(before, *functionList, *varList, *featureList);
}

bool TCtrlMain::Continue(const std::string& command, std::size_t done, std::size_t total) {
  const auto now = std::chrono::steady_clock::now();
  if (now - lastDrawn >= kDrawInterval) {
    view.ShowWork(command + ", " + GroupThousands(done) + " of " + GroupThousands(total));
    showsWork = true;
    // The time after drawing: where that is slow, work and drawing alternate instead of the drawing taking all the
    // time.
    lastDrawn = std::chrono::steady_clock::now();
  }
  return !isInterrupted;
}

void TCtrlMain::ProcessEvents() {
  view.ProcessEvents();
}

void TCtrlMain::Pause(int milliseconds) {
  view.Pause(milliseconds);
}

void TCtrlMain::SetSeed(std::uint32_t seed) {
  classifierList->SetSeed(seed);
  // The directions of the map are drawn by rand().
  std::srand(seed);
}

void TCtrlMain::UpdateVariables() {
  view.ShowVariables(*varList);
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
  // The case counts, as the line is not folded yet. All that follows the blank is the name.
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
  const auto run = [&] { return function->Execute(parsed.Parameters); };
  return RunGuarded(run, [this](const char* reason) { PrintLine(reason); }) || PrintFunctionFailed();
}

bool TCtrlMain::RunAssignFunction(const TParsedCommand& parsed, TOrigin origin) {
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
  if (origin == TOrigin::kDropped && parsed.Function == "loaddatabase" &&
      !base::IsDirectory(TFunction::StripQuotes(parsed.Parameters.front()))) {
    // A hand that slipped must not cost the database that stands there.
    PrintLine("Path is not a directory");
    return PrintFunctionFailed();
  }
  // All that can be refused has been refused: from here on a failure costs the variable.
  const bool existedBefore = varList->Find(parsed.Destination) != nullptr;
  const auto run = [&] { return FillDestination(*function, parsed); };
  if (RunGuarded(run, [this](const char* reason) { PrintLine(reason); })) {
    return true;
  }
  // The destination may be half filled, and a variable with half of its data is worse than none.
  varList->Remove(parsed.Destination);
  PrintFunctionFailed();
  if (existedBefore) {
    PrintLine(FormatString("Variable '%s' was removed", parsed.Destination.c_str()));
  }
  return false;
}

bool TCtrlMain::PrintFunctionFailed() {
  // What a command printed last is the reason that it gave.
  failure = kFunctionFailed + (lastPrinted.empty() ? "" : ": " + lastPrinted);
  PrintLine(kFunctionFailed);
  return false;
}

void TCtrlMain::ReportFailedLine() {
  std::string text;
  for (const TPosition& position : underWay) {
    if (!position.script.empty()) {
      text += position.script + ":" + std::to_string(position.line) + ": ";
    }
  }
  if (!text.empty()) {
    view.ReportFailedLine(text + (failure.empty() ? lastPrinted : failure));
  }
}

bool TCtrlMain::FillDestination(TFunction& function, const TParsedCommand& parsed) {
  TVar* destination = varList->Find(parsed.Destination);
  // A variable of the right type is filled as it stands, which keeps it in its place of the table and lets a command
  // take over what it can use.
  if (destination != nullptr && destination->GetType() != function.GetReturnType()) {
    PrintLine("Destination variable already exists but has a different type, replacing it");
    varList->Remove(parsed.Destination);
    destination = nullptr;
  }
  if (destination == nullptr) {
    destination = AddVariable(function.CreateReturnVariable(), parsed.Destination);
  }
  return function.ExecuteWithReturn(*destination, parsed.Parameters);
}

bool TCtrlMain::RunAssign(const TParsedCommand& parsed) {
  const TVar* source = varList->Find(parsed.Source);
  TVar* destination = varList->Find(parsed.Destination);
  if (source == nullptr) {
    PrintLine(FormatString("Variable '%s' not found", parsed.Source.c_str()));
    return false;
  }
  if (destination != nullptr && destination->GetType() == source->GetType()) {
    destination->Assign(source);
    return true;
  }
  // The copy is made before anything goes, since memory may not suffice for it.
  std::unique_ptr<TVar> copy = source->CreateNew();
  copy->Assign(source);
  if (destination != nullptr) {
    PrintLine("Destination variable has a different type, replacing it");
    varList->Remove(parsed.Destination);
  }
  AddVariable(std::move(copy), parsed.Destination);
  return true;
}

TVar* TCtrlMain::AddVariable(std::unique_ptr<TVar> variable, const std::string& name) {
  TVar* added = variable.get();
  added->SetName(name);
  varList->Add(std::move(variable));
  return added;
}
