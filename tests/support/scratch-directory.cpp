#include "tests/support/scratch-directory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace filesystem = std::filesystem;

TScratchDirectory::TScratchDirectory() : before(filesystem::current_path()) {
  std::random_device random;
  do {
    path = filesystem::temp_directory_path() / ("tessimar-test-" + std::to_string(random()));
  } while (!filesystem::create_directory(path));
  filesystem::current_path(path);
}

TScratchDirectory::~TScratchDirectory() {
  std::error_code error;
  filesystem::current_path(before, error);
  // A test may have taken the permission to look into a directory.
  for (filesystem::recursive_directory_iterator entry(path, error), end; entry != end; entry.increment(error)) {
    if (entry->is_directory(error) && !entry->is_symlink(error)) {
      filesystem::permissions(entry->path(), filesystem::perms::owner_all, filesystem::perm_options::add, error);
    }
  }
  filesystem::remove_all(path, error);
}

void MakeFile(const filesystem::path& path, const std::string& bytes) {
  if (path.has_parent_path()) {
    filesystem::create_directories(path.parent_path());
  }
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string FileBytes(const filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(no file)";
}
