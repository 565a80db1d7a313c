#include "experiments/collection.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "experiments/encoding.h"
#include "images/picture-list.h"

namespace {

bool HasPictureEnding(const std::string& name) {
  constexpr std::array<std::string_view, 5> kEndings = {".jpg", ".jpeg", ".png", ".tif", ".tiff"};
  const std::string folded = base::FoldCase(name);
  return std::any_of(kEndings.begin(), kEndings.end(),
                     [&](std::string_view ending) { return folded.ends_with(ending); });
}

/// Nothing, and the reason, for what is no directory.
std::optional<TPictureCollection> OpenCollection(const std::string& directory, std::string& reason) {
  if (!base::IsDirectory(directory)) {
    reason = FormatString("Collection '%s' is no directory", directory.c_str());
    return std::nullopt;
  }
  TPictureCollection collection;
  // The name as the file system has it, since paths are made of it for every picture.
  collection.location = base::WithTrailingSeparator(base::NativePath(directory));
  return collection;
}

/// How many files of a directory are named like pictures but are none by a rule.
std::size_t CountLeftOut(const std::string& directory, bool (*isPicture)(const std::string&)) {
  const auto names = base::ListFiles(directory);
  return names ? static_cast<std::size_t>(std::count_if(
                     names->begin(), names->end(),
                     [&](const std::string& name) { return IsNamedLikePicture(name) && !isPicture(name); }))
               : 0;
}

std::string CannotRead(const std::string& directory) {
  return FormatString("Directory '%s' cannot be read", directory.c_str());
}

}  // namespace

std::optional<TPictureCollection> ReadCollection(const std::string& directory, std::string& reason) {
  auto collection = OpenCollection(directory, reason);
  if (!collection) {
    return std::nullopt;
  }
  // The rule of loaddatabase, so that positions in annotation files mean the same pictures in both programs.
  auto names = ListPictures(collection->location);
  if (!names || names->empty()) {
    reason = names ? FormatString("Collection '%s' holds no picture", directory.c_str()) : CannotRead(directory);
    return std::nullopt;
  }
  collection->names = std::move(*names);
  collection->leftOut = CountLeftOut(collection->location, IsPictureName);
  collection->leftOutRule = "their names do not contain '.jpg'";
  return collection;
}

std::optional<TPictureCollection> ReadClasses(const std::string& directory, std::string& reason) {
  auto collection = OpenCollection(directory, reason);
  if (!collection) {
    return std::nullopt;
  }
  // A picture beside the classes has no tag, and is in nobody's ground truth.
  collection->leftOut = CountLeftOut(collection->location, [](const std::string& /*name*/) { return false; });
  collection->leftOutRule = "they lie in no class, or end in none of .jpg, .jpeg, .png, .tif and .tiff";
  auto entries = base::ListDirectory(collection->location);
  if (!entries) {
    reason = CannotRead(directory);
    return std::nullopt;
  }
  std::erase_if(*entries, [&](const std::string& entry) { return !base::IsDirectory(collection->location + entry); });
  // By bytes: the order is part of the results, and must not depend on a locale or on the file system.
  std::sort(entries->begin(), entries->end());
  for (const std::string& entry : *entries) {
    auto names = base::ListFiles(collection->location + entry);
    if (!names) {
      reason = CannotRead(collection->location + entry);
      return std::nullopt;
    }
    std::erase_if(*names, [](const std::string& name) { return !HasPictureEnding(name); });
    collection->leftOut += CountLeftOut(collection->location + entry, HasPictureEnding);
    SortPictureNames(*names);
    for (const std::string& name : *names) {
      // A slash on every platform: names are part of digests, and of the tables that name pictures.
      collection->names.push_back(std::string(entry).append("/").append(name));
      // The directory's name is the tag.
      collection->classes.push_back(entry);
    }
  }
  if (collection->names.empty()) {
    reason = FormatString("Collection '%s' holds no directory with pictures", directory.c_str());
    return std::nullopt;
  }
  return collection;
}

TPictureNames::TPictureNames(const TPictureCollection& collection) {
  for (std::size_t i = 0; i < collection.names.size(); ++i) {
    positions.emplace(collection.names[i], i);
  }
}

std::optional<std::size_t> TPictureNames::Find(const std::string& name) const {
  // As it is written first: a picture may really be called "a%20b.jpg".
  auto found = positions.find(name);
  if (found == positions.end()) {
    found = positions.find(Decode(name));
  }
  return found == positions.end() ? std::nullopt : std::optional(found->second);
}
