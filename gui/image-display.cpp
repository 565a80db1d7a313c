#include "gui/image-display.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

#include "ui_image-display.h"

TImageDisplay::TImageDisplay(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::TImageDisplay>()) {
  ui->setupUi(this);
}

TImageDisplay::~TImageDisplay() = default;

void TImageDisplay::SetImage(const QImage& image) {
  const int width = image.width() + 20;
  const int height = image.height() + 50;
  resize(width, height);
  const QSize screen = QGuiApplication::screens().first()->size();
  move((screen.width() - width) / 2, (screen.height() - height) / 2);
  ui->laImage->resize(image.size());
  ui->pbClose->move(image.width() - 65, image.height() + 20);
  ui->laImage->setPixmap(QPixmap::fromImage(image));
}

void TImageDisplay::on_pbClose_clicked() {
  close();
}
