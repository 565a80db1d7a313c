#pragma once

#include <boost/function.hpp>

class QDialog;

using TDialogRunner = boost::function<void(QDialog&)>;

/// Shows a modal dialog and returns when it is closed. The only way in which the program runs a dialog.
void RunDialog(QDialog& dialog);

/// False where dialogs are skipped, so that nobody would see what a command prepares for one.
bool DialogsAreShown();

/// Puts another runner in the place of QDialog::exec for its own lifetime, for programs that have nobody to close a
/// dialog. Scopes nest; an empty runner skips dialogs.
class TDialogRunnerScope {
 public:
  explicit TDialogRunnerScope(const TDialogRunner& runner);
  ~TDialogRunnerScope();
  TDialogRunnerScope(const TDialogRunnerScope&) = delete;
  TDialogRunnerScope& operator=(const TDialogRunnerScope&) = delete;

  bool HasRunner() const { return !runner.empty(); }

 private:
  TDialogRunner runner;
  const TDialogRunnerScope* outer;

  friend void RunDialog(QDialog& dialog);
};
