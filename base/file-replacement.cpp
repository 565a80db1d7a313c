#include "base/file-replacement.h"

#include <boost/filesystem.hpp>

namespace base {

namespace {

std::string Beside(const std::string& path) {
  return path + ".new";
}

}  // namespace

TFileReplacement::TFileReplacement(const std::string& path)
    : path(path), file(std::fopen(Beside(path).c_str(), "wb")), failed(!file), isBeside(file != nullptr) {}

TFileReplacement::~TFileReplacement() {
  if (isBeside) {
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
  boost::system::error_code error;
  boost::filesystem::rename(Beside(path), path, error);
  isBeside = isBeside && error;
  return !error;
}

}  // namespace base
