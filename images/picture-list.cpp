#include "images/picture-list.h"

#include <algorithm>

#include "base/native-path.h"

bool IsPictureName(const std::string& name) {
  return name.find(".jpg") != std::string::npos;
}

void SortPictureNames(std::vector<std::string>& names) {
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
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
