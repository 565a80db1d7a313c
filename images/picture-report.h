#pragma once

#include <set>
#include <string>

#include <boost/function.hpp>

class TImageRGB;

/// Tells the user of the pictures, or other files of a collection, that one command could not read or found damaged,
/// once a file: a line for each of the first ten of either kind, and one for all that follow.
class TPictureReport {
 public:
  explicit TPictureReport(const boost::function<void(std::string)>& thePrint) : print(thePrint) {}

  /// Loads a picture, and reports what is wrong with it, if anything is. False, and the picture as it was, if it cannot
  /// be read.
  bool Load(const std::string& filename, TImageRGB& picture);

  /// Reports a file that the caller has loaded, or failed to load, in its own way, if anything is wrong with it.
  void Note(const std::string& filename, bool isRead, const TImageRGB& picture);

  /// Tells of a file that cannot be read.
  void AddUnreadable(const std::string& filename);

  /// Tells if the file's beginning shows already that it cannot be read; nothing is decoded.
  void Check(const std::string& filename);

  /// Prints how many more files of either kind there were; to be called once, before the command's last line.
  void PrintRest() const;

 private:
  void AddUnreadable(const std::string& filename, const std::string& line);

  boost::function<void(std::string)> print;
  std::set<std::string> unreadable;
  std::set<std::string> damaged;
};
