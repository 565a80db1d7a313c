#include "base/abandoned-files.h"

#include <ctime>
#include <string_view>
#include <vector>

#include <boost/filesystem.hpp>

#include "base/native-path.h"

namespace base {

namespace {

/// True for the names that base::ReplaceFile gives: ".tessimar-", two numbers and "-" between them.
bool IsNeighborName(std::string_view name) {
  constexpr std::string_view kStart = ".tessimar-";
  if (!name.starts_with(kStart)) {
    return false;
  }
  name.remove_prefix(kStart.size());
  // All of it is asked for: a name that only begins so may be the user's own.
  const auto isNumber = [](std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
  };
  const std::size_t dash = name.find('-');
  return dash != std::string_view::npos && isNumber(name.substr(0, dash)) && isNumber(name.substr(dash + 1));
}

}  // namespace

void RemoveAbandonedFiles(const std::string& directory) {
  constexpr std::time_t kHour = 3600;
  const std::time_t now = std::time(nullptr);
  for (const std::string& name : ListFiles(directory).value_or(std::vector<std::string>())) {
    if (!IsNeighborName(name)) {
      continue;
    }
    const std::string path = WithTrailingSeparator(directory) + name;
    boost::system::error_code error;
    const std::time_t changed = boost::filesystem::last_write_time(path, error);
    // A file that has gone since the listing gives an error. A time in the future, from a server whose clock runs
    // ahead, gives a negative age. Neither is touched.
    if (!error && now - changed > kHour) {
      RemoveFile(path);
    }
  }
}

}  // namespace base
