#pragma once

#include <fstream>
#include <iostream>
#include <string>

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QTimer>

/// Ends the program's loop of events once the window has been painted for the first time.
class TLeaveAfterPaint : public QObject {
 public:
  explicit TLeaveAfterPaint(QObject* window) { window->installEventFilter(this); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) {
      QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    }
    return QObject::eventFilter(watched, event);
  }
};

/// Shows the window until it has been painted, and writes the most memory that the process had, in KiB, for the bench
/// that started it. What the system reports to a parent also covers the parent's own memory at the start.
inline int ShowOnce(QMainWindow& window) {
  const TLeaveAfterPaint leave(&window);
  window.show();
  const int status = QApplication::exec();
  std::ifstream lines("/proc/self/status");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("VmHWM:")) {
      std::cout << std::stol(line.substr(line.find(':') + 1)) << '\n';
    }
  }
  return status;
}
