#pragma once

#include <deque>
#include <string>

#include "base/file-replacement.h"

/// The directory of an experiment's results. New files stand beside the earlier ones until all of them are whole.
class TOutputDirectory {
 public:
  /// `path` is ended by a separator.
  explicit TOutputDirectory(const std::string& thePath) : path(thePath) {}

  /// Begins a file of that name below the directory; it stays good until Commit.
  base::TFileReplacement& Begin(const std::string& name);
  void Add(const std::string& name, const std::string& bytes) { Begin(name).Write(bytes); }

  /// Puts all files in their places. On failure the path of the file that cannot be written; every earlier file is then
  /// as it was, unless a file that was written cannot be renamed.
  std::string Commit();
  /// True if every file that was begun is in its place.
  bool IsCommitted() const { return files.empty(); }

 private:
  std::string path;
  std::deque<base::TFileReplacement> files;
};

/// Makes the directory of that name, ended by a separator, if it is not there. False, and the reason, if it cannot be
/// written or holds anything else than an experiment's files.
bool OpenOutputDirectory(const std::string& path, std::string& reason);
