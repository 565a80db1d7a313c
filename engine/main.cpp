#include <cstdio>
#include <cstdlib>

#include <QApplication>

#include "base/memory.h"
#include "base/text.h"
#include "engine/ctrl-main.h"
#include "engine/window-view.h"
#include "gui/main-window.h"

namespace {

/// Without a display the toolkit can only give up. It would do so by dumping core; a plain message and a status are
/// kinder.
void ReportAndLeaveIfFatal(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  std::fprintf(stderr, "%s\n", qPrintable(message));
  if (type == QtFatalMsg) {
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace

int main(int argc, char** argv) {
  base::KeepFreedMemory();
  qInstallMessageHandler(ReportAndLeaveIfFatal);
  QApplication application(argc, argv);
  // Where the desktop looks up the icon by that name.
  QGuiApplication::setDesktopFileName("tessimar");
  base::UseClassicNumbers();
  MainWindow window;
  TWindowView view(window);
  const TCtrlMain controller(view);
  window.show();
  return QApplication::exec();
}
