#include "experiments/file-name.h"

#include "experiments/digest.h"

std::string FitFileName(const std::string& name, std::string_view ending) {
  // File systems take 255 bytes. The rest is for what stands behind the name while the file is written.
  constexpr std::size_t kMost = 240;
  // Hexadecimal digits of a SHA-256.
  constexpr std::size_t kDigest = 64;
  std::string fitting = name;
  if (name.size() + ending.size() > kMost) {
    fitting = name.substr(0, kMost - ending.size() - kDigest - 1) + '~' + DigestOf(name);
  }
  return fitting.append(ending);
}
