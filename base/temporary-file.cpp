#include "base/temporary-file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "base/file.h"
#include "base/format-string.h"

TTemporaryFile::TTemporaryFile(const std::string& prefix) {
  // A number taken already is no reason to give up; so many in a row are.
  constexpr int kAttempts = 1000;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    // The libraries take a bare name, so that the file lies in the working directory, where the user may save models
    // anyway. rand() need not be unpredictable: the exclusive open below is what protects.
    const std::string candidate = FormatString("%s%d.dat", prefix.c_str(), std::rand());
    // "x" makes the file or fails: whatever stands there, a dangling link too, is left alone.
    if (std::FILE* file = std::fopen(candidate.c_str(), "wbx")) {
      std::fclose(file);
      name = candidate;
      return;
    }
    if (errno != EEXIST) {
      return;
    }
  }
}

TTemporaryFile::~TTemporaryFile() {
  if (Exists()) {
    std::remove(name.c_str());
  }
}

bool TTemporaryFile::Write(const std::string& bytes) const {
  return Exists() && base::ReplaceFile(name, bytes.data(), bytes.size());
}

std::optional<std::string> TTemporaryFile::Read() const {
  return Exists() ? base::ReadFile(name) : std::optional<std::string>();
}
