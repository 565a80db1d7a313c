// Files of stored features with any numbers in them. For each file the input has a byte: the length of the block behind
// it that the file is made of, over and over up to the length of a vector, or 255 for a block of any length that stands
// once. What is left is the list of the sources.

#include <array>
#include <string_view>

#include "fuzz/input.h"
#include "fuzz/workshop.h"

namespace {

constexpr std::array<const char*, 4> kFiles = {"FeatureStorage/hsv-im1.dat", "FeatureStorage/hsv-im2.dat",
                                               "FeatureStorage/HSV-im10.dat", "FeatureStorage/lbp-im1.dat"};

/// The contents of the next file.
std::string TakeFile(TInputReader& reader) {
  constexpr std::size_t kVector = 256 * sizeof(double);
  const std::size_t choice = reader.Take<std::uint8_t>();
  if (choice == 255) {
    return std::string(reader.TakeBlock(std::size_t{reader.Take<std::uint8_t>()} * 16 + reader.Take<std::uint8_t>()));
  }
  const std::string_view block = reader.TakeBlock(choice);
  std::string bytes;
  while (bytes.size() < kVector) {
    bytes += block.empty() ? std::string(1, '\0') : std::string(block);
  }
  bytes.resize(kVector);
  return bytes;
}

}  // namespace

void FillWorkshop() {
  MakeTinyPictures();
  MakeFile("run", R"(db = loaddatabase("photos")
loadfeature(db, "hsv")
loadfeature(db, "lbp")
q = loadimage("query.png")
updatefeature(q, "hsv")
updatefeature(q, "lbp")
index = searchimage(db, q)
displayindex(index)
removefeature(q, "lbp")
index = searchimage(db, q)
savefeature(db, "hsv")
savefeature(db, "lbp")
copy = db
loadfeature(copy, "hsv")
)");
}

void TryInput(const std::uint8_t* data, std::size_t size) {
  TInputReader reader(data, size);
  std::array<std::string, kFiles.size()> contents;
  for (std::size_t i = 0; i < kFiles.size(); ++i) {
    contents[i] = TakeFile(reader);
    MakeFile(kFiles[i], contents[i]);
  }
  MakeFile("FeatureStorage/hsv.sources", std::string(reader.GetRest()));
  if (!RunSession("run")) {
    return;
  }
  // What was loaded is stored again as it was, and what is no vector is let be.
  for (std::size_t i = 0; i < kFiles.size(); ++i) {
    Require(FileBytes(kFiles[i]) == contents[i]);
  }
}
