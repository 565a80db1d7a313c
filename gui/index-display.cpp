#include "gui/index-display.h"

#include <QImage>
#include <QPixmap>
#include <QShowEvent>

#include "gui/fit-dialog.h"
#include "ui_index-display.h"

TIndexDisplay::TIndexDisplay(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::TIndexDisplay>()), labels() {
  ui->setupUi(this);
  // Return closes the dialog until Tab leads to a picture.
  ui->pbClose->setFocus(Qt::OtherFocusReason);
  labels = {ui->laImage1,  ui->laImage2,  ui->laImage3,  ui->laImage4,  ui->laImage5,  ui->laImage6,
            ui->laImage7,  ui->laImage8,  ui->laImage9,  ui->laImage10, ui->laImage11, ui->laImage12,
            ui->laImage13, ui->laImage14, ui->laImage15, ui->laImage16};
}

TIndexDisplay::~TIndexDisplay() = default;

void TIndexDisplay::SetImage(const QImage& image, int position, const TPictureItem& item) {
  labels.at(static_cast<std::size_t>(position))->SetPicture(QPixmap::fromImage(image), {item});
}

void TIndexDisplay::showEvent(QShowEvent* event) {
  // Once: a reduced dialog fits, and its tiles are hidden behind the picture of all.
  if (!event->spontaneous() && !isReduced && ExceedsScreen(*this)) {
    Reduce();
  } else if (!event->spontaneous()) {
    MoveOntoScreen(*this);
  }
  QDialog::showEvent(event);
}

void TIndexDisplay::Reduce() {
  QRect tiles;
  for (const TPictureView* label : labels) {
    tiles |= label->geometry();
  }
  std::vector<TPictureItem> items;
  for (const TPictureView* label : labels) {
    for (TPictureItem item : label->GetItems()) {
      // In the coordinates of the whole.
      item.place = label->geometry().translated(-tiles.topLeft());
      items.push_back(item);
    }
  }
  // The dialog is its parent and deletes it.
  auto* whole = new TPictureView(this);
  // One picture of all sixteen: they shrink together and keep their distances.
  whole->SetPicture(grab(tiles), items);
  for (TPictureView* label : labels) {
    label->hide();
  }
  ReduceToScreen(*this, *whole, *ui->pbClose, tiles.size());
  whole->show();
  isReduced = true;
}

void TIndexDisplay::on_pbClose_clicked() {
  close();
}
