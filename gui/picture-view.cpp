#include "gui/picture-view.h"

#include <algorithm>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QHelpEvent>
#include <QKeyEvent>
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
  setFocusPolicy(picture.isNull() && items.empty() ? Qt::NoFocus : Qt::TabFocus);
  // The first item is that of the whole picture.
  setAccessibleName(items.empty() ? QString("Picture") : ToQString(items.front().text));
  chosen = 0;
}

void TPictureView::Reduce(QSize size) {
  resize(size);
  // The proportions were kept by whoever chose the size; scaling to exactly that size leaves no seam.
  // In pixels of the screen and not in logical ones, or a screen with more of them would show it blurred.
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
  // 64 bits, since the product of two sides may exceed 32. At least 1, since a view may be shrunk to nothing.
  return {static_cast<int>(qint64{point.x()} * full.width() / std::max(width(), 1)),
          static_cast<int>(qint64{point.y()} * full.height() / std::max(height(), 1))};
}

QPoint TPictureView::FromPicture(QPoint point) const {
  if (reduced.isNull()) {
    return point;
  }
  if (isFull) {
    return point - origin;
  }
  const QSize full = GetFullSize();
  return {static_cast<int>(qint64{point.x()} * width() / std::max(full.width(), 1)),
          static_cast<int>(qint64{point.y()} * height() / std::max(full.height(), 1))};
}

const TPictureItem* TPictureView::ChosenItem() const {
  return chosen < items.size() ? &items[chosen] : nullptr;
}

void TPictureView::Choose(std::size_t index) {
  chosen = index;
  const TPictureItem& item = items[chosen];
  setAccessibleName(ToQString(item.text));
  const QRect place = item.place.isNull() ? rect() : QRect(FromPicture(item.place.topLeft()), QSize(1, 1));
  QToolTip::showText(mapToGlobal(place.topLeft()), PlainToolTip(ToQString(item.text)), this);
  update();
}

void TPictureView::Toggle(QPoint point) {
  const QPoint place = ToPicture(point);
  isFull = !isFull;
  // What was under the pointer stays under it.
  ShowFrom(place - point);
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
  } else if (isFull) {
    // Unnamed, so that it ends here: only one painter at a time may work on a widget, and the focus frame below needs
    // another.
    QPainter(this).drawPixmap(-origin, picture);
  } else {
    QPainter(this).drawPixmap(0, 0, reduced);
  }
  if (!hasFocus()) {
    return;
  }
  // Where the keyboard is, in two colors, of which one shows on every picture.
  const TPictureItem* item = ChosenItem();
  const bool isPart = item != nullptr && !item->place.isNull();
  const QRect place =
      isPart ? QRect(FromPicture(item->place.topLeft()), FromPicture(item->place.bottomRight())) : rect();
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::HighlightedText));
  // A stroked rectangle is larger than its QRect by the width of the pen, here one pixel.
  painter.drawRect(place.adjusted(1, 1, -2, -2));
  painter.setPen(palette().color(QPalette::Highlight));
  painter.drawRect(place.adjusted(0, 0, -1, -1));
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
    Toggle(event->position().toPoint());
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
  const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
  const TPictureItem* item = isByKey ? ChosenItem() : FindItem(event->pos());
  // A copy: the menu runs an event loop, in which the view may be given another picture with other items.
  const std::string filename = item == nullptr ? std::string() : item->filename;
  QMenu menu(this);
  menu.setAccessibleName("Picture");
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
    const bool isPart = isByKey && item != nullptr && !item->place.isNull();
    menu.exec(isPart ? mapToGlobal(FromPicture(item->place.center())) : event->globalPos());
  }
}

void TPictureView::keyPressEvent(QKeyEvent* event) {
  // Pixels of the picture at full size, for each press of a key.
  constexpr int kStep = 60;
  const int key = event->key();
  if (key == Qt::Key_Space && !reduced.isNull()) {
    const TPictureItem* item = ChosenItem();
    Toggle(item == nullptr || item->place.isNull() ? QPoint() : FromPicture(item->place.center()));
    setCursor(isFull ? Qt::OpenHandCursor : Qt::PointingHandCursor);
    return;
  }
  const bool isForward = key == Qt::Key_Right || key == Qt::Key_Down;
  if (!isForward && key != Qt::Key_Left && key != Qt::Key_Up) {
    QLabel::keyPressEvent(event);
    return;
  }
  if (isFull) {
    const int step = isForward ? kStep : -kStep;
    ShowFrom(origin + (key == Qt::Key_Left || key == Qt::Key_Right ? QPoint(step, 0) : QPoint(0, step)));
  } else if (isForward ? chosen + 1 < items.size() : chosen > 0) {
    Choose(isForward ? chosen + 1 : chosen - 1);
  }
}

void TPictureView::focusInEvent(QFocusEvent* event) {
  QLabel::focusInEvent(event);
  if (ChosenItem() != nullptr) {
    Choose(chosen);
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
