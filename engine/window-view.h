#pragma once

#include <chrono>

#include <QTimer>

#include "engine/view.h"

class MainWindow;

/// The view of a person at a screen: the main window.
class TWindowView : public TView {
 public:
  /// The window outlives the view.
  explicit TWindowView(MainWindow& window);
  ~TWindowView() override;

  void SetListener(TViewListener* listener) override;
  void AddFeature(const std::string& name) override;
  void AddClassifier(const std::string& name) override;
  void AddSegmentationMethod(const std::string& name) override;
  void AddOutput(const std::string& text) override;
  void ReportFailedLine(const std::string& /*text*/) override {}
  void ShowVariables(const TVarList& list) override;
  std::string GetCommandText() const override;
  void SetCommandText(const std::string& text) override;
  void SelectCommandText() override;
  void BeginWork() override;
  void EndWork() noexcept override;
  bool IsClosing() const override;
  void ShowWork(const std::string& text) override;
  void ProcessEvents() override;
  void Pause(int milliseconds) override;

 private:
  /// Shows what is unshown. Where memory does not suffice, it stays unshown.
  void FillTable() noexcept;
  void FillRows();

  MainWindow& window;
  /// What the table is to show; null while it shows it.
  const TVarList* unshown = nullptr;
  /// Fills the table while work is under way, when it next draws itself: rows cost time, and a script has many lines.
  QTimer fillTimer;
  int workDepth = 0;
};
