// A whole session of tessimar-batch: the input is its script. All commands can succeed with what lies in the directory.

#include "fuzz/input.h"
#include "fuzz/workshop.h"

void FillWorkshop() {
  MakeTinyPictures();
  MakeFile("tags/tree.txt", "1\r\n3\r\n");
  MakeFile("tags/house.r1.txt", "2\r\nnone\r\n99\r\n");
  MakeFile("start.txt",
           "db = loaddatabase(\"photos\")\r\nq = loadimage(\"query.png\")\r\nupdatefeature(db, \"hsv\")\r\n");
}

void TryInput(const std::uint8_t* data, std::size_t size) {
  MakeFile("lines", std::string(reinterpret_cast<const char*>(data), size));
  RunSession("lines");
}
