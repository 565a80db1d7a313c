#include "gui/fit-dialog.h"

#include <algorithm>

#include <QDialog>
#include <QScreen>

#include "gui/picture-view.h"

namespace {

// What a window manager may put around a window. It is known only once the window is shown, too late to fit it.
constexpr QSize kFrame(16, 40);
// The distance of the picture from the left and upper edges, and what the dialog has besides the picture.
constexpr int kMargin = 10;
constexpr QSize kAround(20, 50);

}  // namespace

bool ExceedsScreen(const QDialog& dialog) {
  const QSize outer = dialog.size() + kFrame;
  return dialog.screen()->availableGeometry().size().boundedTo(outer) != outer;
}

void ReduceToScreen(QDialog& dialog, TPictureView& view, QWidget& closeButton, QSize fullSize) {
  const QSize available = dialog.screen()->availableGeometry().size() - kFrame;
  const QSize size = fullSize.scaled(available - kAround, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
  view.move(kMargin, kMargin);
  view.Reduce(size);
  dialog.resize(std::max(size.width(), closeButton.width()) + kAround.width(), size.height() + kAround.height());
  closeButton.move(dialog.width() - kMargin - closeButton.width(), size.height() + 2 * kMargin);
  const QRect screen = dialog.screen()->availableGeometry();
  dialog.move(screen.center() - QRect(QPoint(), dialog.size() + kFrame).center());
}

void MoveOntoScreen(QDialog& dialog) {
  const QRect screen = dialog.screen()->availableGeometry();
  const QSize outer = dialog.size() + kFrame;
  const auto bounded = [](int place, int first, int room) { return std::max(std::min(place, first + room), first); };
  const QPoint place(bounded(dialog.x(), screen.x(), screen.width() - outer.width()),
                     bounded(dialog.y(), screen.y(), screen.height() - outer.height()));
  if (place != dialog.pos()) {
    dialog.move(place);
  }
}

void ShrinkToScreen(QWidget& window) {
  const QRect screen = window.screen()->availableGeometry();
  if (window.height() + kFrame.height() > screen.height()) {
    window.resize(window.size().boundedTo(screen.size() - kFrame));
    window.move(screen.topLeft());
  }
}
