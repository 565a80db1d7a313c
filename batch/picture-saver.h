#pragma once

#include <string>

class QDialog;

/// Saves dialogs, in place of showing them, as numbered pictures in a directory.
class TPictureSaver {
 public:
  /// `directory` exists.
  explicit TPictureSaver(const std::string& theDirectory) : directory(theDirectory) {}

  void Save(QDialog& dialog);

  /// The first file that could not be written; empty if all could.
  const std::string& GetFailedFile() const { return failedFile; }

 private:
  std::string directory;
  int count = 0;
  std::string failedFile;
};
