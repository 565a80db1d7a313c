#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

/// The pictures of an experiment, in an order that is part of its results. No file is opened.
struct TPictureCollection {
  /// Ended by a separator.
  std::string location;
  /// The paths of the pictures below the location.
  std::vector<std::string> names;
  /// For each picture the directory that it lies in, where directories are classes; otherwise empty.
  std::vector<std::string> classes;
  /// How many files beside them are named like pictures too, and by which rule they are left out.
  std::size_t leftOut = 0;
  const char* leftOutRule = "";

  std::string GetPath(std::size_t picture) const { return location + names[picture]; }
};

/// Reads a directory as loaddatabase does. Nothing, and the reason, if it cannot be read or holds no picture.
std::optional<TPictureCollection> ReadCollection(const std::string& directory, std::string& reason);

/// Reads a directory of directories, each of them a class, in byte order. Within a class pictures stand in
/// loaddatabase's order; a picture is a file whose name ends in .jpg, .jpeg, .png, .tif or .tiff, in any case.
std::optional<TPictureCollection> ReadClasses(const std::string& directory, std::string& reason);

/// Finds pictures by name. Refers to the collection.
class TPictureNames {
 public:
  explicit TPictureNames(const TPictureCollection& collection);

  /// The position of the picture of that name, or else of the one whose name is written so in a table; nothing if there
  /// is none.
  std::optional<std::size_t> Find(const std::string& name) const;

 private:
  std::unordered_map<std::string, std::size_t> positions;
};
