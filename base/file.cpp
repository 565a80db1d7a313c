#include "base/file.h"

#include <array>
#include <cstdio>
#include <memory>

#include "base/native-path.h"

namespace base {

namespace {

struct TFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

using TFilePointer = std::unique_ptr<std::FILE, TFileCloser>;

}  // namespace

std::optional<std::string> ReadFile(const std::string& path) {
  const TFilePointer file(std::fopen(NativePath(path).c_str(), "rb"));
  if (!file) {
    return std::nullopt;
  }
  std::string bytes;
  std::array<char, 65536> block;
  std::size_t count = 0;
  while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
    bytes.append(block.data(), count);
  }
  if (std::ferror(file.get()) != 0) {
    return std::nullopt;
  }
  return bytes;
}

bool WriteFile(const std::string& path, const std::string& bytes) {
  TFilePointer file(std::fopen(path.c_str(), "wb"));
  if (!file) {
    return false;
  }
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  // A full disk may show only when the last block goes out.
  return std::fclose(file.release()) == 0 && written;
}

}  // namespace base
