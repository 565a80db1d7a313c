#include "base/mapped-file.h"

#include <boost/interprocess/exceptions.hpp>
#include <boost/interprocess/file_mapping.hpp>
#include <boost/interprocess/mapped_region.hpp>

namespace base {

std::optional<TMappedFile> TMappedFile::Open(const std::string& path) {
  namespace interprocess = boost::interprocess;
  try {
    // Closed at the end of the block: a mapping holds the file by itself (POSIX, mmap). If another program cuts the
    // file short meanwhile, touching the missing pages ends this one with SIGBUS.
    const interprocess::file_mapping file(path.c_str(), interprocess::read_only);
    const auto region = std::make_shared<interprocess::mapped_region>(file, interprocess::read_only);
    TMappedFile mapped;
    mapped.size = region->get_size();
    mapped.bytes = std::shared_ptr<const std::byte>(region, static_cast<const std::byte*>(region->get_address()));
    return mapped;
  } catch (const interprocess::interprocess_exception&) {
    // An empty file cannot be mapped either: POSIX refuses a length of 0.
    return std::nullopt;
  }
}

}  // namespace base
