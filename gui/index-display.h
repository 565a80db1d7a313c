#pragma once

#include <array>
#include <memory>

#include <QDialog>

class QImage;
class QLabel;

namespace Ui {
class TIndexDisplay;
}

/// A modal dialog that shows sixteen tiles in rows of four.
class TIndexDisplay : public QDialog {
  Q_OBJECT

 public:
  static constexpr int kTileCount = 16;

  explicit TIndexDisplay(QWidget* parent = nullptr);
  ~TIndexDisplay() override;

  /// Shows the picture on a tile, counted from 0 in reading order. A tile is 160 x 120 and cuts what is larger.
  void SetImage(const QImage& image, int position);

 private slots:
  void on_pbClose_clicked();

 private:
  std::unique_ptr<Ui::TIndexDisplay> ui;
  std::array<QLabel*, kTileCount> labels;
};
