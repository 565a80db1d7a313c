#pragma once

#include <string>
#include <vector>

/// A list of lines with its text file: the command history, and the one reader of line-oriented text files (scripts,
/// annotations). Lines end in carriage return and line feed. The reader cuts at line feeds and drops the one character
/// in front of each, whatever it is; text behind the last line feed is not read.
class TCommandHistory {
 public:
  /// Replaces `entries` by the lines of the file, up to its first zero byte. False, without entries, if the file cannot
  /// be read or there is none.
  bool Load(const std::string& filename);

  /// True if Load found a file that the system does not let us read.
  bool IsUnreadable() const { return isUnreadable; }

  /// Whether the text that was loaded last had a line feed without a carriage return in front of it, where a character
  /// of the line was lost, and whether text stood behind the last line feed, which was lost.
  bool HasBareLineFeed() const { return hasBareLineFeed; }
  bool HasOpenLastLine() const { return hasOpenLastLine; }

  /// True if the text that was loaded last begins with the mark of UTF-8, which is then a part of its first line.
  bool HasByteOrderMark() const { return hasByteOrderMark; }

  /// Writes every entry and its line end, in place of what the file held. False if that fails.
  bool Save(const std::string& filename) const;

  /// Replaces `entries` by a copy of the other's.
  void Assign(const TCommandHistory& other) { entries = other.entries; }

  std::vector<std::string> entries;

 private:
  bool hasBareLineFeed = false;
  bool hasOpenLastLine = false;
  bool hasByteOrderMark = false;
  bool isUnreadable = false;
};
