#include "gui/fit-dialog.h"

#include <algorithm>

#include <QDialog>
#include <QScreen>

#include "gui/picture-view.h"

namespace {

// What a window manager may put around a window. It is known only once the window is shown, too late to fit it.
constexpr QSize kFrame(16, 40);
constexpr QPoint kContents(8, 32);
// The distance of the picture from the left and upper edges, and what the dialog has besides the picture.
constexpr int kMargin = 10;
constexpr QSize kAround(20, 50);

/// Moves a window that exists but is not shown yet, so that the frame that it will have begins at `place`. Before it
/// exists, QWidget::move() counts the frame; from then on until it is shown, it does not.
void MoveFrame(QWidget& window, QPoint place) {
  window.move(place + kContents);
}

}  // namespace

bool ExceedsScreen(const QDialog& dialog) {
  const QSize outer = dialog.size() + kFrame;
  // Without task bars and panels.
  return dialog.screen()->availableGeometry().size().boundedTo(outer) != outer;
}

void ReduceToScreen(QDialog& dialog, TPictureView& view, QWidget& closeButton, QSize fullSize) {
  const QSize available = dialog.screen()->availableGeometry().size() - kFrame;
  // At least one pixel either way: a very long, thin picture would vanish.
  const QSize size = fullSize.scaled(available - kAround, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
  view.move(kMargin, kMargin);
  view.Reduce(size);
  dialog.resize(std::max(size.width(), closeButton.width()) + kAround.width(), size.height() + kAround.height());
  closeButton.move(dialog.width() - kMargin - closeButton.width(), size.height() + 2 * kMargin);
  const QRect screen = dialog.screen()->availableGeometry();
  const QSize free = screen.size() - dialog.size() - kFrame;
  MoveFrame(dialog, screen.topLeft() + QPoint(free.width() / 2, free.height() / 2));
}

void MoveOntoScreen(QDialog& dialog) {
  const QRect screen = dialog.screen()->availableGeometry();
  const QSize outer = dialog.size() + kFrame;
  // Where there is no room, the upper left corner counts: it has the title bar.
  const auto bounded = [](int place, int first, int room) { return std::max(std::min(place, first + room), first); };
  const QPoint place(bounded(dialog.pos().x(), screen.x(), screen.width() - outer.width()),
                     bounded(dialog.pos().y(), screen.y(), screen.height() - outer.height()));
  if (place != dialog.pos()) {
    MoveFrame(dialog, place);
  }
}

void ShrinkToScreen(QWidget& window) {
  const QRect screen = window.screen()->availableGeometry();
  if (window.height() + kFrame.height() > screen.height()) {
    window.resize(window.size().boundedTo(screen.size() - kFrame));
    MoveFrame(window, screen.topLeft());
  }
}
