// The program's window with its engine, made as the program makes them, or with the argument "bare" an empty window.
// Both load all libraries of the program.

#include <string_view>

#include "base/memory.h"
#include "base/text.h"
#include "benchmarks/start-window.h"
#include "engine/ctrl-main.h"
#include "engine/window-view.h"
#include "gui/main-window.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "bare") {
    QApplication application(argc, argv);
    QMainWindow window;
    return ShowOnce(window);
  }
  base::KeepFreedMemory();
  QApplication application(argc, argv);
  base::UseClassicNumbers();
  MainWindow window;
  TWindowView view(window);
  const TCtrlMain controller(view);
  return ShowOnce(window);
}
