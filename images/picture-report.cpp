#include "images/picture-report.h"

#include <cstddef>

#include "base/format-string.h"
#include "images/image-rgb.h"

namespace {

/// How many files of one kind get a line of their own.
constexpr std::size_t kMostLines = 10;

int CountRest(const std::set<std::string>& files) {
  return files.size() > kMostLines ? static_cast<int>(files.size() - kMostLines) : 0;
}

}  // namespace

bool TPictureReport::Load(const std::string& filename, TImageRGB& picture) {
  const bool isRead = picture.LoadFromFile(filename);
  Note(filename, isRead, picture);
  return isRead;
}

void TPictureReport::Note(const std::string& filename, bool isRead, const TImageRGB& picture) {
  if (const auto& size = picture.GetRefusedSize(); !isRead && size) {
    const auto [width, height] = *size;
    AddUnreadable(filename, FormatString("File '%s' is too large: %d x %d", filename.c_str(), width, height));
  } else if (!isRead) {
    AddUnreadable(filename);
  } else if (picture.IsDamaged() && damaged.insert(filename).second && damaged.size() <= kMostLines) {
    // Once a file, however often a command meets it: a picture may stand in a ranking, in a map and as the query.
    print(FormatString("File '%s' is damaged", filename.c_str()));
  }
}

void TPictureReport::Check(const std::string& filename) {
  TImageRGB picture;
  Note(filename, picture.ReadHeader(filename), picture);
}

void TPictureReport::AddUnreadable(const std::string& filename) {
  AddUnreadable(filename, FormatString("File '%s' cannot be read", filename.c_str()));
}

void TPictureReport::AddUnreadable(const std::string& filename, const std::string& line) {
  // Files without a line are kept too: PrintRest() counts them, and each only once.
  if (unreadable.insert(filename).second && unreadable.size() <= kMostLines) {
    print(line);
  }
}

void TPictureReport::PrintRest() const {
  if (const int rest = CountRest(unreadable); rest > 0) {
    print(FormatString("%d more files cannot be read", rest));
  }
  if (const int rest = CountRest(damaged); rest > 0) {
    print(FormatString("%d more files are damaged", rest));
  }
}
