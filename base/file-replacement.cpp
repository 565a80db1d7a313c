#include "base/file-replacement.h"

#include <boost/filesystem.hpp>

namespace base {

namespace {

std::string Beside(const std::string& path) {
  // In the same directory, since rename() works only within one file system. The name is always the same: what a killed
  // program left behind is overwritten by the next attempt.
  return path + ".new";
}

}  // namespace

TFileReplacement::TFileReplacement(const std::string& thePath)
    : path(thePath), file(std::fopen(Beside(thePath).c_str(), "wb")), failed(!file), isBeside(file != nullptr) {}

TFileReplacement::~TFileReplacement() {
  if (isBeside) {
    // Closed first: Windows does not remove an open file.
    file.reset();
    std::remove(Beside(path).c_str());
  }
}

void TFileReplacement::Write(std::string_view bytes) {
  failed = failed || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size();
}

bool TFileReplacement::Finish() {
  // A full disk may show only when the last block goes out.
  failed = (file && std::fclose(file.release()) != 0) || failed;
  return !failed;
}

bool TFileReplacement::Commit() {
  // Not std::rename, which on Windows refuses to replace a file. On POSIX systems the replacement is atomic: a reader
  // sees either all of the earlier file or all of the new one.
  boost::system::error_code error;
  boost::filesystem::rename(Beside(path), path, error);
  isBeside = isBeside && error;
  return !error;
}

}  // namespace base
