#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QMainWindow>
#include <QTextCursor>
#include <boost/function.hpp>

#include "gui/command-line.h"
#include "gui/command-offer.h"
#include "gui/variables-table.h"
#include "gui/work-input.h"

namespace Ui {
class MainWindow;
}

/// The one permanent window: the variables, the running output, the command line, and three lists of what is available.
/// It holds no state of the engine. What it shows arrives by calls; it sends bare notifications, and asks for one
/// thing: what completes a command.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);
  ~MainWindow() override;

  /// Fired by the up and down keys in the command line.
  boost::function<void()> OnKeyUp;
  boost::function<void()> OnKeyDown;
  /// Fired by Return in the command line, for each complete line that is pasted, and by F1.
  boost::function<void()> OnReturnPressed;
  /// Fired when a dropped file has left its line in the command line.
  boost::function<void()> OnFileDropped;
  /// Fired when the work under way shall end, by Escape or because the window is to be closed.
  boost::function<void()> OnInterrupt;
  /// Asked by Tab for what may stand in place of the end of the given text, which stands before the cursor.
  boost::function<TCandidates(const std::string&)> OnComplete;

  /// Add one row to a side table.
  void AddFeature(const std::string& name);
  void AddClassifier(const std::string& name);
  void AddSegmentationMethod(const std::string& name);

  /// Shows these rows in the Variables table. What did not change costs a comparison.
  void SetVariables(const std::vector<TVariableRow>& rows);

  /// Inserts the text, which brings its own line end, at the cursor of the output pane, or behind what was inserted
  /// there last. What is selected stays selected.
  void AddOutput(const std::string& text);
  /// Draws the output pane now and not when the toolkit next handles events.
  void PaintOutput();

  std::string GetCommandText() const;
  void SetCommandText(const std::string& text);
  void ClearCommandText();
  /// Selects the text, so that typing replaces it.
  void SelectCommandText();

  /// Between SetBusy(true) and SetBusy(false), which nest, a command runs: the pointer is busy, and of the user's input
  /// only Escape and closing have an effect. Both fire OnInterrupt. What is typed meanwhile is delivered afterwards.
  /// The outermost SetBusy(true) draws the output pane; the outermost SetBusy(false) comes after the command line was
  /// emptied, and closes the window if that was asked for.
  void SetBusy(bool isBusy);
  /// Shows in the title what is being done, nothing for an empty text, and lets the window draw itself.
  void ShowWork(const std::string& text);
  /// Handles the events that wait. Outside of SetBusy the user's input goes on waiting.
  void ProcessWorkEvents();
  /// True from the moment at which the user asked for the window to be closed, if only after the work under way. Lines
  /// that wait are then no longer run.
  bool IsClosing() const { return isClosing; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private slots:
  void on_leCommand_returnPressed();
  void on_leCommand_linesPasted(const QString& text);

 private:
  /// A widget that keeps its distance from the edges of its parent.
  struct TFollower {
    QWidget* widget;
    QMargins margins;
  };

  /// True if the event was one of the keys that belong to the window.
  bool HandleCommandKey(int key);
  /// Has the contents follow their panes from now on.
  void FollowPanes();
  void ArrangeChildrenOf(const QWidget* parent);
  void ArrangeSideTables();
  void RunHelp();
  void Interrupt();
  void TakeOffer(const std::string& line);
  /// Writes the name of a variable into the command line, or into an empty one the line that shows it.
  void TakeVariable(int row);
  void InsertIntoCommand(const QString& text);

  std::unique_ptr<Ui::MainWindow> ui;
  /// Empty until the window was shown: at the size of the form, its own geometry holds.
  std::vector<TFollower> followers;
  TWorkInput workInput;
  TCommandOfferScope offerScope;
  /// A command that was offered while another ran.
  std::string offered;
  /// Behind the text that was inserted last; null once the user moved the cursor.
  QTextCursor outputEnd;
  bool isClosing = false;
};
