// The files that hold command lines: the history, and three scripts that may run each other and themselves.

#include "fuzz/input.h"
#include "fuzz/workshop.h"

void FillWorkshop() {
  MakeTinyPictures();
  MakeFile("run", "executescript(\"a.txt\")\nexecutescript(\"CommandHistory.txt\")\n");
}

void TryInput(const std::uint8_t* data, std::size_t size) {
  const auto parts = PartsOf(data, size, 4);
  MakeFile("CommandHistory.txt", parts[0]);
  MakeFile("a.txt", parts[1]);
  MakeFile("b.txt", parts[2]);
  MakeFile("c.txt", parts[3]);
  RunSession("run");
  // What is stored of the history is what the next session begins with.
  RunSession("run");
}
