#include "gui/work-input.h"

#include <utility>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

TWorkInput::TWorkInput(QWidget* theWindow) : window(theWindow) {}

TWorkInput::~TWorkInput() {
  ShowPointer(false);
}

void TWorkInput::Begin() {
  // The inner ones only count.
  if (depth++ > 0) {
    return;
  }
  isButtonHeld = QGuiApplication::mouseButtons() != Qt::NoButton;
  // Application-wide, since a key event visits window, widget and completer in turn; IsWindows picks out the ones that
  // count.
  QCoreApplication::instance()->installEventFilter(this);
  ShowPointer(true);
}

void TWorkInput::End() {
  if (depth == 0 || --depth > 0) {
    return;
  }
  QCoreApplication::instance()->removeEventFilter(this);
  ShowPointer(false);
  // Posted and not sent: whoever ended the work may have more to do before the next key counts.
  for (TKept& each : std::exchange(kept, {})) {
    // A widget of a dialog may be gone by now. The queue takes the event over and deletes it.
    if (each.receiver) {
      QCoreApplication::postEvent(each.receiver, each.event.release());
    }
  }
}

bool TWorkInput::eventFilter(QObject* watched, QEvent* event) {
  if (!IsWindows(watched)) {
    return false;
  }
  switch (event->type()) {
    // A dialog of the command under way takes the window's input: the pointer must not look busy over it.
    case QEvent::WindowBlocked:
    case QEvent::WindowUnblocked:
      ShowPointer(event->type() == QEvent::WindowUnblocked);
      return false;
    case QEvent::KeyPress:
      return HandleKeyPress(watched, event);
    case QEvent::KeyRelease:
      if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) {
        Keep(watched, *event);
      }
      return true;
    case QEvent::InputMethod:
      Keep(watched, *event);
      return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
      return HandleMouse(static_cast<const QMouseEvent&>(*event));
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
      return true;
    default:
      return false;
  }
}

bool TWorkInput::IsWindows(const QObject* watched) const {
  if (const auto* widget = qobject_cast<const QWidget*>(watched)) {
    return widget->window() == window;
  }
  return watched == window->windowHandle();
}

bool TWorkInput::HandleKeyPress(QObject* watched, QEvent* event) {
  const auto* key = static_cast<const QKeyEvent*>(event);
  if (key->key() == Qt::Key_Escape) {
    if (OnInterrupt) {
      OnInterrupt();
    }
  } else if (key->keyCombination() == (Qt::CTRL | Qt::Key_Q)) {
    window->close();
  } else {
    Keep(watched, *event);
  }
  return true;
}

bool TWorkInput::HandleMouse(const QMouseEvent& event) {
  if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
    // The first button of a new press: that of the work's beginning was let go.
    isButtonHeld = isButtonHeld && event.buttons() != Qt::MouseButtons(event.button());
    return true;
  }
  // A widget that has seen the press waits for the release; without it a scroll bar would stick to the pointer. The
  // release visits window, widget and its parents in turn, so that the first of them must not be the last.
  return !isButtonHeld || (event.type() == QEvent::MouseMove && event.buttons() == Qt::NoButton);
}

void TWorkInput::Keep(QObject* receiver, const QEvent& event) {
  // A clone, because the toolkit reuses the original.
  kept.push_back({receiver, std::unique_ptr<QEvent>(event.clone())});
}

void TWorkInput::ShowPointer(bool isBusy) {
  if (isBusy == pointerIsBusy) {
    return;
  }
  // The toolkit keeps a stack of such pointers: each one that is set must be taken back, and only once.
  pointerIsBusy = isBusy;
  if (isBusy) {
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
  } else {
    QGuiApplication::restoreOverrideCursor();
  }
}
