// tessimar-batch: the workbench without a screen, for servers, scripts and tests. The same engine runs with a stream of
// text in place of the window; dialogs are made on the toolkit's offscreen platform.

#include "batch/program.h"

int main(int argc, char** argv) {
  return RunBatch(argc, argv, "tessimar-batch " TESSIMAR_VERSION "\n");
}
