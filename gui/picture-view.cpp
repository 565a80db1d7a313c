#include "gui/picture-view.h"

#include <algorithm>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QHelpEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QSaveFile>
#include <QToolTip>
#include <QUrl>

#include "base/native-path.h"
#include "gui/command-offer.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/tool-tip.h"

TPictureView::TPictureView(QWidget* parent) : QLabel(parent) {}

void TPictureView::SetPicture(const QPixmap& newPicture, const std::vector<TPictureItem>& newItems) {
  picture = newPicture;
  items = newItems;
  setPixmap(picture);
  if (!items.empty()) {
    // The first item is that of the whole picture.
    setAccessibleName(ToQString(items.front().text));
  }
}

void TPictureView::Reduce(QSize size) {
  resize(size);
  // The proportions were kept by whoever chose the size; scaling to exactly that size leaves no seam.
  reduced = QPixmap::fromImage(
      picture.toImage().scaled(size * devicePixelRatioF(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  reduced.setDevicePixelRatio(devicePixelRatioF());
  setCursor(Qt::PointingHandCursor);
}

QSize TPictureView::GetFullSize() const {
  return picture.deviceIndependentSize().toSize();
}

QPoint TPictureView::ToPicture(QPoint point) const {
  if (reduced.isNull()) {
    return point;
  }
  if (isFull) {
    return point + origin;
  }
  const QSize full = GetFullSize();
  return {static_cast<int>(qint64{point.x()} * full.width() / std::max(width(), 1)),
          static_cast<int>(qint64{point.y()} * full.height() / std::max(height(), 1))};
}

const TPictureItem* TPictureView::FindItem(QPoint point) const {
  const QPoint place = ToPicture(point);
  // From the last, which was drawn on top.
  const auto found = std::find_if(items.rbegin(), items.rend(), [&](const TPictureItem& item) {
    return item.place.isNull() || item.place.contains(place);
  });
  return found == items.rend() ? nullptr : &*found;
}

bool TPictureView::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) {
    return QLabel::event(event);
  }
  const auto* help = static_cast<QHelpEvent*>(event);
  // Asked for at the moment of the tooltip: the same view shows different things at different places.
  const TPictureItem* item = FindItem(help->pos());
  QToolTip::showText(help->globalPos(), item == nullptr ? QString() : PlainToolTip(ToQString(item->text)), this);
  return true;
}

void TPictureView::paintEvent(QPaintEvent* event) {
  if (reduced.isNull()) {
    QLabel::paintEvent(event);
    return;
  }
  QPainter painter(this);
  if (isFull) {
    painter.drawPixmap(-origin, picture);
  } else {
    painter.drawPixmap(0, 0, reduced);
  }
}

void TPictureView::mousePressEvent(QMouseEvent* event) {
  if (reduced.isNull() || event->button() != Qt::LeftButton) {
    QLabel::mousePressEvent(event);
    return;
  }
  // Whether it becomes a click or a drag shows later.
  pressed = event->position().toPoint();
  originThen = origin;
  isDragged = false;
}

void TPictureView::mouseMoveEvent(QMouseEvent* event) {
  if (!isFull || !event->buttons().testFlag(Qt::LeftButton)) {
    return;
  }
  const QPoint moved = event->position().toPoint() - pressed;
  // A hand that trembles while it clicks does not drag.
  isDragged = isDragged || moved.manhattanLength() >= QApplication::startDragDistance();
  if (isDragged) {
    setCursor(Qt::ClosedHandCursor);
    ShowFrom(originThen - moved);
  }
}

void TPictureView::mouseReleaseEvent(QMouseEvent* event) {
  if (reduced.isNull() || event->button() != Qt::LeftButton) {
    QLabel::mouseReleaseEvent(event);
    return;
  }
  if (!isDragged) {
    const QPoint clicked = event->position().toPoint();
    const QPoint place = ToPicture(clicked);
    isFull = !isFull;
    // What was under the pointer stays under it.
    ShowFrom(place - clicked);
  }
  setCursor(isFull ? Qt::OpenHandCursor : Qt::PointingHandCursor);
}

void TPictureView::ShowFrom(QPoint newOrigin) {
  // How much of the picture lies outside the view; 0 along an axis where all of it fits.
  const QSize hidden = (GetFullSize() - size()).expandedTo(QSize(0, 0));
  origin = QPoint(std::clamp(newOrigin.x(), 0, hidden.width()), std::clamp(newOrigin.y(), 0, hidden.height()));
  update();
}

void TPictureView::contextMenuEvent(QContextMenuEvent* event) {
  const TPictureItem* item = FindItem(event->pos());
  const std::string filename = item == nullptr ? std::string() : item->filename;
  QMenu menu(this);
  if (!filename.empty()) {
    menu.addAction("Copy file name", this, [&] { QApplication::clipboard()->setText(ToQString(filename)); });
    menu.addAction("Open file", this, [&] {
      // The name as the user typed it may differ from the file's in case and slashes.
      const QFileInfo file(ToQString(base::NativePath(filename)));
      if (!file.exists() || !QDesktopServices::openUrl(QUrl::fromLocalFile(file.absoluteFilePath()))) {
        Warn("File '" + ToQString(filename) + "' cannot be opened");
      }
    });
    menu.addAction("Use as query", this, [&] { OfferCommand("query = loadimage(\"" + filename + "\")"); });
  }
  if (!picture.isNull()) {
    menu.addAction("Save picture as PNG...", this, [&] { SavePicture(filename); });
  }
  if (!menu.isEmpty()) {
    menu.exec(event->globalPos());
  }
}

void TPictureView::SavePicture(const std::string& filename) {
  QFileDialog dialog(this, "Save picture as PNG", QString(), "PNG pictures (*.png)");
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  // Else a name without an ending would make a file that no other program knows.
  dialog.setDefaultSuffix("png");
  const std::string name(base::FileNameOf(filename));
  dialog.selectFile(name.empty() ? "picture.png" : QFileInfo(ToQString(name)).completeBaseName() + ".png");
  // Through the seam, so that tests and tessimar-batch can stand in for the user.
  RunDialog(dialog);
  if (dialog.result() != QDialog::Accepted) {
    return;
  }
  const QString path = dialog.selectedFiles().first();
  // Replaces an earlier file only by a whole one.
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || !picture.save(&file, "PNG") || !file.commit()) {
    Warn("File '" + path + "' cannot be written");
  }
}

void TPictureView::Warn(const QString& text) {
  QMessageBox box(QMessageBox::Warning, "Tessimar", QString(), QMessageBox::Ok, this);
  // A file name may look like markup.
  box.setTextFormat(Qt::PlainText);
  box.setText(text);
  RunDialog(box);
}
