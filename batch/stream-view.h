#pragma once

#include <cstdio>
#include <string>

#include "engine/view.h"

/// The view of tessimar-batch: the text of the output pane as a stream, flushed line by line. On standard error it
/// tells which lines of a script fail and, where that is a terminal, how far a command is. It has no command line and
/// shows no variables.
class TStreamView : public TView {
 public:
  /// The stream is not owned.
  explicit TStreamView(std::FILE* stream);

  /// True once a write failed; nothing is written any more.
  bool HasFailed() const { return failed; }
  /// True if it failed because the reader has gone, as head(1) does.
  bool HasLostItsReader() const { return hasLostItsReader; }

  void SetListener(TViewListener* /*listener*/) override {}
  void AddFeature(const std::string& /*name*/) override {}
  void AddClassifier(const std::string& /*name*/) override {}
  void AddSegmentationMethod(const std::string& /*name*/) override {}
  void AddOutput(const std::string& text) override;
  void ReportFailedLine(const std::string& text) override;
  void ShowVariables(const TVarList& /*variables*/) override {}
  std::string GetCommandText() const override { return {}; }
  void SetCommandText(const std::string& /*text*/) override {}
  void SelectCommandText() override {}
  void BeginWork() override {}
  void EndWork() noexcept override {}
  bool IsClosing() const override { return failed; }
  void ShowWork(const std::string& text) override;
  void ProcessEvents() override {}
  void Pause(int /*milliseconds*/) override {}

 private:
  std::FILE* stream;
  bool failed = false;
  bool hasLostItsReader = false;
  bool showsWork;
  /// How many columns of the terminal's line are written.
  std::size_t shownWidth = 0;
};
