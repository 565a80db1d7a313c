#pragma once

#include <memory>
#include <vector>

#include <QDialog>

#include "gui/picture-view.h"

class QImage;

namespace Ui {
class TImageDisplay;
}

/// A modal dialog that shows one picture at its own size, or scaled down where the screen is smaller.
class TImageDisplay : public QDialog {
  Q_OBJECT

 public:
  explicit TImageDisplay(QWidget* parent = nullptr);
  ~TImageDisplay() override;

  /// Shows the picture, and fits the dialog around it in the middle of the screen. The items are what can be seen in
  /// the picture.
  void SetImage(const QImage& image, const std::vector<TPictureItem>& items = {});

 protected:
  void showEvent(QShowEvent* event) override;

 private slots:
  void on_pbClose_clicked();

 private:
  std::unique_ptr<Ui::TImageDisplay> ui;
};
