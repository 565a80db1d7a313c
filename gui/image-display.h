#pragma once

#include <memory>

#include <QDialog>

class QImage;

namespace Ui {
class TImageDisplay;
}

/// A modal dialog that shows one picture at its own size.
class TImageDisplay : public QDialog {
  Q_OBJECT

 public:
  explicit TImageDisplay(QWidget* parent = nullptr);
  ~TImageDisplay() override;

  /// Shows the picture, and fits the dialog around it in the middle of the screen.
  void SetImage(const QImage& image);

 private slots:
  void on_pbClose_clicked();

 private:
  std::unique_ptr<Ui::TImageDisplay> ui;
};
