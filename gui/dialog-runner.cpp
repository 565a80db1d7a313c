#include "gui/dialog-runner.h"

#include <QDialog>

namespace {

// One thread only, and scopes that end in the reverse order of their beginning.
const TDialogRunnerScope* innermost = nullptr;

}  // namespace

TDialogRunnerScope::TDialogRunnerScope(const TDialogRunner& theRunner) : runner(theRunner), outer(innermost) {
  innermost = this;
}

TDialogRunnerScope::~TDialogRunnerScope() {
  innermost = outer;
}

void RunDialog(QDialog& dialog) {
  if (innermost == nullptr) {
    // Runs an event loop of its own: timers fire and windows get input before it returns.
    dialog.exec();
  } else if (innermost->runner) {
    innermost->runner(dialog);
  }
}

bool DialogsAreShown() {
  return innermost == nullptr || innermost->HasRunner();
}
