#include "gui/index-display.h"

#include <QImage>
#include <QPixmap>

#include "ui_index-display.h"

TIndexDisplay::TIndexDisplay(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::TIndexDisplay>()), labels() {
  ui->setupUi(this);
  labels = {ui->laImage1,  ui->laImage2,  ui->laImage3,  ui->laImage4,  ui->laImage5,  ui->laImage6,
            ui->laImage7,  ui->laImage8,  ui->laImage9,  ui->laImage10, ui->laImage11, ui->laImage12,
            ui->laImage13, ui->laImage14, ui->laImage15, ui->laImage16};
}

TIndexDisplay::~TIndexDisplay() = default;

void TIndexDisplay::SetImage(const QImage& image, int position) {
  labels.at(static_cast<std::size_t>(position))->setPixmap(QPixmap::fromImage(image));
}

void TIndexDisplay::on_pbClose_clicked() {
  close();
}
