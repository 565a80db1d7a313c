#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The door to the file system. Paths are UTF-8 bytes as the user typed them, folded to lower case by the command
/// parser and possibly written with backslashes. What reads a file that a user named goes through NativePath first,
/// here or in the caller; what writes takes the path exactly as it is spelled, and so does what reads the program's own
/// files back.
namespace base {

/// True for both slashes, on every platform: wherever the program cuts a path, both count.
bool IsSeparator(char character);

/// The path with the platform's separator at its end. A path that ends in either slash is left as it is.
std::string WithTrailingSeparator(std::string path);

/// What follows the last separator of either kind; the whole path if it has none. Refers to the argument's characters.
std::string_view FileNameOf(std::string_view path);

/// The path of a dropped file, from the path of its URL: "/c:/pictures" loses the slash in front of the drive letter,
/// every other path is returned as it is.
std::string DroppedPath(std::string urlPath);

/// The path under which the platform knows what the user typed. A path that exists as written is returned as written.
/// Otherwise a backslash counts as a slash, and each component is matched without regard to the case of ASCII letters:
/// an exact match wins, of several others the first in byte order. The part that does not exist stays as written. The
/// directories resolved last are remembered, so that the files of one directory cost one resolution. (Where the file
/// system folds case itself, the path is returned unchanged.)
std::string NativePath(const std::string& path);

/// Tests on NativePath(path). A path that cannot be examined counts as absent.
bool Exists(const std::string& path);
bool IsRegularFile(const std::string& path);
bool IsDirectory(const std::string& path);

/// The same text for every way to write the path of an existing file: absolute, without links and detours. A file that
/// does not exist gives NativePath(path).
std::string CanonicalPath(const std::string& path);

/// Removes the file of exactly this name, but no directory. True if nothing stands there afterwards.
bool RemoveFile(const std::string& path);

/// The names of the entries directly in a directory, in the order in which the system delivers them; nothing if the
/// directory cannot be read.
std::optional<std::vector<std::string>> ListDirectory(const std::string& path);

/// The same without the entries that are directories (or links to directories).
std::optional<std::vector<std::string>> ListFiles(const std::string& path);

/// Makes a directory below an existing one, spelled exactly so. True if it stands afterwards, whoever made it.
bool MakeDirectory(const std::string& path);

/// Makes a directory and those above it, spelled exactly so, where they are missing. True if files can be made in it.
bool MakeWritableDirectory(const std::string& path);

}  // namespace base
