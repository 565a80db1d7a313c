#include "base/native-path.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <memory>
#include <unordered_map>
#include <utility>

#include <boost/filesystem.hpp>
#ifndef _WIN32
#include <dirent.h>
#endif

#include "base/text.h"

namespace base {

namespace filesystem = boost::filesystem;

namespace {

#ifdef _WIN32
constexpr char kSeparator = '\\';

filesystem::path ToPath(const std::string& text) {
  // The locale owns the facet, whose count of references begins at 0.
  static const std::locale utf8(std::locale::classic(), new filesystem::detail::utf8_codecvt_facet);
  return filesystem::path(text, utf8);
}
#else
constexpr char kSeparator = '/';

filesystem::path ToPath(const std::string& text) {
  return text;
}
#endif

filesystem::file_status Status(const std::string& nativePath) {
  boost::system::error_code error;
  return filesystem::status(ToPath(nativePath), error);
}

enum class TEntryKind { kAny, kNoDirectory };

#ifdef _WIN32

std::optional<std::vector<std::string>> List(const std::string& nativePath, TEntryKind kind) {
  boost::system::error_code error;
  filesystem::directory_iterator entry(ToPath(nativePath), error);
  std::vector<std::string> names;
  while (!error && entry != filesystem::directory_iterator()) {
    boost::system::error_code statusError;
    if (kind == TEntryKind::kAny || !filesystem::is_directory(entry->status(statusError))) {
      names.push_back(entry->path().filename().string());
    }
    entry.increment(error);
  }
  return error ? std::nullopt : std::optional(names);
}

#else

/// Asks the system only where the directory itself does not tell.
bool IsDirectoryEntry(const std::string& directory, const dirent& entry) {
  // Not all file systems fill d_type in, and a link says nothing about what it points to.
  if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) {
    return entry.d_type == DT_DIR;
  }
  return filesystem::is_directory(Status(directory + "/" + entry.d_name));
}

/// The system's own calls: an iterator that makes a path of each entry takes four times as long on a large collection.
std::optional<std::vector<std::string>> List(const std::string& nativePath, TEntryKind kind) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(nativePath.c_str()), closedir);
  if (!directory) {
    return std::nullopt;
  }
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && (kind == TEntryKind::kAny || !IsDirectoryEntry(nativePath, *entry))) {
      names.emplace_back(name);
    }
    errno = 0;
  }
  // readdir() returns null both at the end and on an error; only errno, which has to be cleared before each call, tells
  // which.
  return errno == 0 ? std::optional(std::move(names)) : std::nullopt;
}

#endif

#ifndef _WIN32

/// The entries of the directory that was searched last, by their folded names. A database whose files have vanished
/// asks for each of them in the same directory, which is then read once and not once for each file.
class TListing {
 public:
  /// The entry of `directory` that equals `name` but for case, the first in byte order; nothing if there is none.
  std::optional<std::string> Find(const std::string& directory, const std::string& name) {
    boost::system::error_code error;
    const std::time_t changed = filesystem::last_write_time(directory, error);
    // Times are kept in seconds, so a directory that changed just now may change again and not show it.
    if (error || directory != listed || changed != changedThen || readAt - changed < 2) {
      Read(directory, changed);
    }
    const auto found = entries.find(FoldCase(name));
    return found == entries.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  void Read(const std::string& directory, std::time_t changed) {
    listed = directory;
    changedThen = changed;
    readAt = std::time(nullptr);
    entries.clear();
    for (std::string& name : List(directory, TEntryKind::kAny).value_or(std::vector<std::string>())) {
      const auto [entry, isNew] = entries.try_emplace(FoldCase(name), name);
      // The order in which the system delivers names differs between machines; the smallest one wins on all of them.
      if (!isNew && name < entry->second) {
        entry->second = std::move(name);
      }
    }
  }

  std::string listed;
  std::time_t changedThen = 0;
  std::time_t readAt = 0;
  std::unordered_map<std::string, std::string> entries;
};

/// The entry of `directory` (empty, or ended by a slash) that `name` stands for; nothing if there is none.
std::optional<std::string> MatchEntry(const std::string& directory, const std::string& name) {
  static TListing listing;
  // An exact match costs one call of the system and no listing, and it is what there is nearly always.
  if (filesystem::exists(Status(directory + name))) {
    return name;
  }
  return listing.Find(directory.empty() ? "." : directory, name);
}

/// Matches `path` (slashes only) component by component. `complete` tells whether all of it exists.
std::string MatchComponents(const std::string& path, bool& complete) {
  std::string resolved;
  std::size_t start = 0;
  complete = true;
  while (start < path.size()) {
    const std::size_t slash = path.find('/', start);
    const std::string name = path.substr(start, slash == std::string::npos ? slash : slash - start);
    // An empty name is a leading or doubled slash.
    const std::optional<std::string> entry = name.empty() ? name : MatchEntry(resolved, name);
    if (!entry) {
      complete = false;
      return resolved + path.substr(start);
    }
    resolved += *entry;
    if (slash == std::string::npos) {
      break;
    }
    resolved += '/';
    start = slash + 1;
  }
  return resolved;
}

/// The directories resolved last, as pairs of the spelling asked for and the one found, both ended by a slash.
class TDirectoryMemory {
 public:
  std::optional<std::string> Find(const std::string& asked) const {
    const auto entry =
        std::find_if(entries.begin(), entries.end(), [&](const auto& each) { return each.first == asked; });
    return entry == entries.end() ? std::nullopt : std::optional(entry->second);
  }

  void Remember(const std::string& asked, const std::string& found) {
    // At most eight entries, searched one by one: a map would cost more than it saves.
    std::erase_if(entries, [&](const auto& each) { return each.first == asked; });
    entries.emplace_front(asked, found);
    if (entries.size() > kMostEntries) {
      entries.pop_back();
    }
  }

 private:
  static constexpr std::size_t kMostEntries = 8;
  std::deque<std::pair<std::string, std::string>> entries;
};

#endif

}  // namespace

bool IsSeparator(char character) {
  return character == '/' || character == '\\';
}

std::string WithTrailingSeparator(std::string path) {
  if (path.empty() || !IsSeparator(path.back())) {
    path += kSeparator;
  }
  return path;
}

std::string_view FileNameOf(std::string_view path) {
  const std::size_t separator = path.find_last_of("/\\");
  return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

std::string DroppedPath(std::string urlPath) {
  const auto isLetter = [](char character) { return LowerAscii(character) >= 'a' && LowerAscii(character) <= 'z'; };
  // The toolkit's path of file:///c:/pictures begins with the slash that ends the (empty) host.
  if (urlPath.size() >= 3 && urlPath[0] == '/' && isLetter(urlPath[1]) && urlPath[2] == ':') {
    urlPath.erase(0, 1);
  }
  return urlPath;
}

#ifdef _WIN32

std::string NativePath(const std::string& path) {
  return path;
}

#else

std::string NativePath(const std::string& path) {
  if (path.empty() || filesystem::exists(Status(path))) {
    return path;
  }
  std::string slashed = path;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');

  // Both memories are static and without a lock: the program has one thread.
  static TDirectoryMemory memory;
  const std::size_t nameStart = slashed.find_last_of('/') + 1;
  const std::string directory = slashed.substr(0, nameStart);
  const std::string name = slashed.substr(nameStart);
  // The file itself is asked for even so. A directory that was renamed since then gives no hit and is resolved anew.
  if (const auto found = memory.Find(directory); found && filesystem::exists(Status(*found + name))) {
    return *found + name;
  }
  bool complete = false;
  const std::string resolvedDirectory = MatchComponents(directory, complete);
  if (!complete) {
    return resolvedDirectory + name;
  }
  if (!directory.empty()) {
    memory.Remember(directory, resolvedDirectory);
  }
  return resolvedDirectory + MatchEntry(resolvedDirectory, name).value_or(name);
}

#endif

bool Exists(const std::string& path) {
  return !path.empty() && filesystem::exists(Status(NativePath(path)));
}

bool IsRegularFile(const std::string& path) {
  return !path.empty() && filesystem::is_regular_file(Status(NativePath(path)));
}

bool IsDirectory(const std::string& path) {
  return !path.empty() && filesystem::is_directory(Status(NativePath(path)));
}

std::string CanonicalPath(const std::string& path) {
  const std::string nativePath = NativePath(path);
#ifdef _WIN32
  boost::system::error_code error;
  const filesystem::path canonical = filesystem::canonical(ToPath(nativePath), error);
  return error ? nativePath : canonical.string();
#else
  // Not by the library, which ends the program where memory is missing for a part of the path. With a null buffer
  // realpath() allocates one by malloc() (POSIX.1-2008).
  const std::unique_ptr<char, decltype(&std::free)> canonical(realpath(nativePath.c_str(), nullptr), &std::free);
  return canonical ? std::string(canonical.get()) : nativePath;
#endif
}

bool RemoveFile(const std::string& path) {
  boost::system::error_code error;
  // remove() would take an empty directory, too.
  if (!filesystem::is_directory(Status(path))) {
    filesystem::remove(ToPath(path), error);
  }
  return !filesystem::exists(Status(path));
}

std::optional<std::vector<std::string>> ListDirectory(const std::string& path) {
  return List(NativePath(path), TEntryKind::kAny);
}

std::optional<std::vector<std::string>> ListFiles(const std::string& path) {
  return List(NativePath(path), TEntryKind::kNoDirectory);
}

bool MakeDirectory(const std::string& path) {
  boost::system::error_code error;
  filesystem::create_directory(ToPath(path), error);
  return filesystem::is_directory(Status(path));
}

bool MakeWritableDirectory(const std::string& path) {
  const filesystem::path directory = ToPath(path);
  boost::system::error_code error;
  filesystem::create_directories(directory, error);
  // It calls "." and ".." invalid. Whether the directory is there shows in what follows, which takes no earlier error.
  error.clear();
  // Permission bits do not tell (read-only file systems, access lists, root), so make something.
  const filesystem::path probe = directory / filesystem::unique_path(".tessimar-%%%%%%%%", error);
  return filesystem::create_directory(probe, error) && filesystem::remove(probe, error);
}

}  // namespace base
