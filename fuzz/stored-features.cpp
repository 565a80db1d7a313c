// Files of stored features with any numbers in them. The input has a byte for each file with its length, then the files
// one behind the other, and behind them the list of their sources.

#include <array>
#include <string_view>

#include "fuzz/input.h"
#include "fuzz/workshop.h"

namespace {

constexpr std::array<const char*, 4> kFiles = {"FeatureStorage/hsv-im1.dat", "FeatureStorage/hsv-im2.dat",
                                               "FeatureStorage/HSV-im10.dat", "FeatureStorage/lbp-im1.dat"};

void MakeFiles() {
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

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  PrepareForSessions();
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static TWorkshop workshop(MakeFiles);
  workshop.Visit([&] {
    TInputReader reader(data, size);
    std::array<std::size_t, kFiles.size()> lengths;
    for (std::size_t& length : lengths) {
      length = std::size_t{reader.Take<std::uint8_t>()} * 4;
    }
    std::array<std::string, kFiles.size()> contents;
    std::string_view rest = reader.GetRest();
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
      contents[i] = rest.substr(0, lengths[i]);
      rest.remove_prefix(contents[i].size());
      MakeFile(kFiles[i], contents[i]);
    }
    MakeFile("FeatureStorage/hsv.sources", std::string(rest));
    // What was loaded was stored again, as far as it was whole numbers.
    if (!RunSession("run")) {
      return;
    }
    for (const std::size_t i : {0U, 1U, 3U}) {
      Require(FileBytes(kFiles[i]) == contents[i].substr(0, contents[i].size() / 8 * 8));
    }
  });
  return 0;
}
