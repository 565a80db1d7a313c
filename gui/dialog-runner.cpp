#include "gui/dialog-runner.h"

#include <QDialog>

namespace {

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
    dialog.exec();
  } else if (innermost->runner) {
    innermost->runner(dialog);
  }
}

bool DialogsAreShown() {
  return innermost == nullptr || innermost->HasRunner();
}
