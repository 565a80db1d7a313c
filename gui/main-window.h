#pragma once

#include <memory>
#include <string>

#include <QMainWindow>
#include <boost/function.hpp>

class QTableWidget;

namespace Ui {
class MainWindow;
}

/// The one permanent window: the variables, the running output, the command line, and three lists of what is available.
/// It holds no state of the engine. What it shows arrives by calls; it sends three bare notifications.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);
  ~MainWindow() override;

  /// Fired by the up and down keys in the command line.
  boost::function<void()> OnKeyUp;
  boost::function<void()> OnKeyDown;
  /// Fired by Return in the command line, and after a file was dropped.
  boost::function<void()> OnReturnPressed;

  /// Add one row to a side table.
  void AddFeature(const std::string& name);
  void AddClassifier(const std::string& name);
  void AddSegmentationMethod(const std::string& name);

  void ClearVariables();
  /// Adds one row to the Variables table. An image shows a thumbnail of its file in place of its type.
  void AddVariable(const std::string& name, const std::string& type, const std::string& description,
                   const std::string& imageFilename);

  /// Inserts the text, which brings its own line end, at the cursor of the output pane.
  void AddOutput(const std::string& text);

  std::string GetCommandText() const;
  void SetCommandText(const std::string& text);
  void ClearCommandText();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private slots:
  void on_leCommand_returnPressed();

 private:
  /// True if the event was one of the keys that belong to the window.
  bool HandleCommandKey(int key);

  std::unique_ptr<Ui::MainWindow> ui;
};
