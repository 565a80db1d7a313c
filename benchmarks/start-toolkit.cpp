// An empty window, linked to nothing but the toolkit.

#include "benchmarks/start-window.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QMainWindow window;
  return ShowOnce(window);
}
