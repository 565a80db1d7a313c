#pragma once

#include <array>
#include <memory>

#include <QDialog>

#include "gui/picture-view.h"

class QImage;

namespace Ui {
class TIndexDisplay;
}

/// A modal dialog that shows sixteen tiles in rows of four, scaled down where the screen is smaller.
class TIndexDisplay : public QDialog {
  Q_OBJECT

 public:
  static constexpr int kTileCount = 16;

  explicit TIndexDisplay(QWidget* parent = nullptr);
  ~TIndexDisplay() override;

  /// Shows the picture on a tile, counted from 0 in reading order. A tile is 160 x 120 and cuts what is larger. The
  /// item stands for all of the tile, also where there is no picture.
  void SetImage(const QImage& image, int position, const TPictureItem& item = {});

 protected:
  void showEvent(QShowEvent* event) override;

 private slots:
  void on_pbClose_clicked();

 private:
  /// Puts one reduced picture of all tiles in their place.
  void Reduce();

  std::unique_ptr<Ui::TIndexDisplay> ui;
  std::array<TPictureView*, kTileCount> labels;
  bool isReduced = false;
};
