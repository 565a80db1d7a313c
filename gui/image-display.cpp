#include "gui/image-display.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QShowEvent>

#include "gui/fit-dialog.h"
#include "ui_image-display.h"

TImageDisplay::TImageDisplay(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::TImageDisplay>()) {
  ui->setupUi(this);
  // Return closes the dialog until Tab leads to a picture.
  ui->pbClose->setFocus(Qt::OtherFocusReason);
}

TImageDisplay::~TImageDisplay() = default;

void TImageDisplay::SetImage(const QImage& image, const std::vector<TPictureItem>& items) {
  const QSize size = image.deviceIndependentSize().toSize();
  // Margins of 10 pixels, and the button below.
  const int width = size.width() + 20;
  const int height = size.height() + 50;
  resize(width, height);
  const QSize screen = QGuiApplication::screens().first()->size();
  move((screen.width() - width) / 2, (screen.height() - height) / 2);
  ui->laImage->resize(size);
  ui->pbClose->move(size.width() - 65, size.height() + 20);
  ui->laImage->SetPicture(QPixmap::fromImage(image), items);
}

void TImageDisplay::showEvent(QShowEvent* event) {
  // Only now the dialog knows its screen. Spontaneous events come from the window system, as when the dialog is brought
  // back from the task bar.
  if (!event->spontaneous() && ExceedsScreen(*this)) {
    ReduceToScreen(*this, *ui->laImage, *ui->pbClose, ui->laImage->size());
  } else if (!event->spontaneous()) {
    MoveOntoScreen(*this);
  }
  QDialog::showEvent(event);
}

void TImageDisplay::on_pbClose_clicked() {
  close();
}
