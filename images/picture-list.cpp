#include "images/picture-list.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/native-path.h"
#include "base/text.h"

bool IsPictureName(const std::string& name) {
  // Anywhere in the name and in lower case only: "a.jpg.bak" is taken up and "A.JPG" is not. The positions of all
  // images, and with them every annotation file and stored ranking, hang on this rule.
  return name.find(".jpg") != std::string::npos;
}

bool IsNamedLikePicture(const std::string& name) {
  const std::string folded = base::FoldCase(name);
  constexpr std::array<std::string_view, 8> kEndings = {".jpg",  ".jpeg", ".png", ".tif",
                                                        ".tiff", ".gif",  ".bmp", ".webp"};
  return std::any_of(kEndings.begin(), kEndings.end(),
                     [&](std::string_view ending) { return folded.ends_with(ending); });
}

void SortPictureNames(std::vector<std::string>& names) {
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    // Shorter names first puts im9.jpg before im10.jpg without looking at the digits, which is the order that
    // collections such as MIR-Flickr number their images in.
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
}

std::optional<std::vector<std::string>> ListPictures(const std::string& directory) {
  auto names = base::ListFiles(directory);
  if (names) {
    std::erase_if(*names, [](const std::string& name) { return !IsPictureName(name); });
    SortPictureNames(*names);
  }
  return names;
}
