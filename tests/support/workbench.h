#pragma once

#include <string>
#include <vector>

#include <QImage>

#include "engine/ctrl-main.h"
#include "engine/window-view.h"
#include "gui/dialog-runner.h"
#include "gui/main-window.h"
#include "tests/support/scratch-directory.h"
#include "tests/support/test-pictures.h"

/// A window's view that keeps what it was given to show.
class TRecordingView : public TWindowView {
 public:
  using TWindowView::TWindowView;

  void AddOutput(const std::string& text) override {
    output += text;
    TWindowView::AddOutput(text);
  }

  std::string output;
};

/// The whole program in an empty directory, its window not shown. Dialogs are kept as pictures in place of being run.
class TWorkbench {
 public:
  TWorkbench();

  /// Runs one line and returns what the output pane got for it, without the echo and the indent.
  std::string Run(const std::string& line);

  /// Everything that the output pane got so far.
  const std::string& GetOutput() const { return view.output; }

  /// The contents of one column of the Variables table, from the first row to the last.
  std::vector<std::string> GetColumn(int column) const;

  TScratchDirectory directory;
  MainWindow window;
  /// The dialogs that commands ran, as a person would have seen them.
  std::vector<QImage> dialogs;

 private:
  TRecordingView view;
  TDialogRunnerScope scope;

 public:
  TCtrlMain controller;
};
