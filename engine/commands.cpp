#include <algorithm>

#include "base/at-end.h"
#include "base/console.h"
#include "base/native-path.h"
#include "engine/command-factories.h"
#include "engine/command-history.h"
#include "engine/var.h"
#include "engine/work.h"

namespace {

// Scripts that call each other in a chain. A circle is found by itself; this bounds the stack that a long chain takes.
constexpr std::size_t kMaxDepth = 32;

/// executescript: runs the lines of a file like typed ones. A line that fails does not stop the script. A script that
/// is already running is not started again, and scripts nest to a fixed depth.
class TFunctionExecuteScript : public TFunction {
 public:
  TFunctionExecuteScript()
      : TFunction({.name = "executescript", .kinds = {"string"}, .help = R"(
Name:        ExecuteScript
Description: Executes a series of commands from a file
Syntax:      ExecuteScript("C:\File.txt")
Returns:     nothing
Parameters:  1 - script file)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const std::string filename = StripQuotes(params[0]);
    // A script that runs itself under another spelling, or through a link, would never end.
    const std::string identity = base::CanonicalPath(filename);
    if (std::find(running.begin(), running.end(), identity) != running.end()) {
      return Fail("Script is already running");
    }
    if (running.size() >= kMaxDepth) {
      return Fail("Scripts are nested too deeply");
    }
    TCommandHistory script;
    if (!LoadLines(filename, script)) {
      return false;
    }
    running.push_back(identity);
    const base::TAtEnd popsScript([this] { running.pop_back(); });
    // The lines were read before the first one runs: a script that a command changes, or that its author saves anew
    // meanwhile, ends as it began. Ctrl-C in a terminal ends it between two lines.
    for (std::size_t i = 0; i < script.entries.size() && !base::Interrupted(); ++i) {
      if (work != nullptr) {
        if (work->IsInterrupted()) {
          return Fail("Script interrupted");
        }
        work->SetPosition(filename, i + 1);
      }
      // A line that fails does not end the script: the user sees which one it was, and the rest may do without it.
      command(script.entries[i]);
      // A window that is not drawn for a whole script looks as if it hung.
      ProcessEvents();
    }
    return true;
  }

 private:
  /// Identities of the files of the scripts under way, the outermost first.
  std::vector<std::string> running;
};

/// reset: empties the variable store. Accepts any parameters and ignores them.
class TFunctionReset : public TFunction {
 public:
  TFunctionReset()
      : TFunction({.name = "reset", .takesAnything = true, .help = R"(
Name:        Reset
Description: Resets the program to its startup state
Syntax:      reset()
Returns:     nothing)"}) {}

  bool Execute(const std::vector<std::string>& /*params*/) override {
    // By name, one after the other, as a user would remove them. History, plug-ins and files stay.
    while (!varList->GetVariables().empty()) {
      varList->Remove(varList->GetVariables().front()->GetName());
    }
    return true;
  }
};

}  // namespace

const TFunctionFactory kMakeExecuteScript = MakeFunction<TFunctionExecuteScript>;
const TFunctionFactory kMakeReset = MakeFunction<TFunctionReset>;
