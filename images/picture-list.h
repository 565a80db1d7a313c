#pragma once

#include <optional>
#include <string>
#include <vector>

/// True for the name of a file that a collection takes up: one with ".jpg" in it.
bool IsPictureName(const std::string& name);

/// True for the ending of a common format of photographs, in any case. Only for a hint to the user: what a collection
/// takes up is decided by IsPictureName.
bool IsNamedLikePicture(const std::string& name);

/// Puts file names in the order of a collection: shorter names first, names of equal length by their bytes.
void SortPictureNames(std::vector<std::string>& names);

/// The names of the image files directly in a directory, in that order: every entry that is no directory and has
/// such a name. No file is opened. Nothing if the directory cannot be read.
std::optional<std::vector<std::string>> ListPictures(const std::string& directory);
