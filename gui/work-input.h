#pragma once

#include <memory>
#include <vector>

#include <QEvent>
#include <QObject>
#include <QPointer>
#include <boost/function.hpp>

class QMouseEvent;
class QWidget;

/// Guards a window while a command runs that lets the toolkit handle events: of the input to the window only Escape,
/// Ctrl+Q and closing have an effect. What is typed meanwhile is kept and delivered afterwards, what the mouse does is
/// lost. Other windows, such as a dialog that the command shows, get their input as usual.
class TWorkInput : public QObject {
 public:
  explicit TWorkInput(QWidget* window);
  ~TWorkInput() override;

  /// Fired by Escape.
  boost::function<void()> OnInterrupt;

  /// Calls nest. With the outermost Begin the pointer becomes busy; with the outermost End it is as before, and what
  /// was typed is on its way.
  void Begin();
  void End();
  bool IsActive() const { return depth > 0; }

  /// Forgets what was typed.
  void DropKept() { kept.clear(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct TKept {
    QPointer<QObject> receiver;
    std::unique_ptr<QEvent> event;
  };

  bool IsWindows(const QObject* watched) const;
  bool HandleKeyPress(QObject* watched, QEvent* event);
  bool HandleMouse(const QMouseEvent& event);
  void Keep(QObject* receiver, const QEvent& event);
  void ShowPointer(bool isBusy);

  QWidget* window;
  int depth = 0;
  bool pointerIsBusy = false;
  /// A button was down when the work began, and none has been pressed anew since it was let go.
  bool isButtonHeld = false;
  std::vector<TKept> kept;
};
