#include "base/plugin-library.h"

#include <boost/filesystem.hpp>

namespace base {

namespace {

#ifdef _WIN32
constexpr const char* kLibrarySuffix = ".dll";
#else
constexpr const char* kLibrarySuffix = ".so";
#endif

}  // namespace

bool IsPluginFileName(const std::string& fileName) {
  return fileName.rfind("Feature", 0) == 0 && fileName.find(kLibrarySuffix) != std::string::npos;
}

std::string PluginLoadPath(const std::string& fileName) {
  boost::system::error_code error;
  return (boost::filesystem::current_path(error) / fileName).string();
}

}  // namespace base
