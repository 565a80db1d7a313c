#pragma once

#include <optional>
#include <string>

/// A file of the working directory for a library that reads and writes only by name. It is new: no link is followed and
/// no other's file is overwritten in making it. It goes with the object.
class TTemporaryFile {
 public:
  /// Makes an empty file called `prefix`, a number from rand(), ".dat".
  explicit TTemporaryFile(const std::string& prefix);
  ~TTemporaryFile();
  TTemporaryFile(const TTemporaryFile&) = delete;
  TTemporaryFile& operator=(const TTemporaryFile&) = delete;

  /// False if no file could be made, as in a directory without the right to write.
  bool Exists() const { return !name.empty(); }

  /// The bare file name; empty if there is no file.
  const std::string& GetName() const { return name; }

  /// Replaces the contents. False if not all could be written.
  bool Write(const std::string& bytes) const;

  /// The contents; nothing if they cannot be read.
  std::optional<std::string> Read() const;

 private:
  std::string name;
};
