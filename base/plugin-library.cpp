#include "base/plugin-library.h"

#ifdef __ELF__
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <type_traits>

#include <elf.h>
#endif

#include <boost/filesystem.hpp>

namespace base {

namespace {

#ifdef _WIN32
constexpr const char* kLibrarySuffix = ".dll";
#else
constexpr const char* kLibrarySuffix = ".so";
#endif

#ifdef __ELF__

// A process loads libraries of its own word size only, so that one form of the header will do: one of the other size
// fails the test of EI_CLASS below, whose byte stands at the same place in both.
using THeader = std::conditional_t<sizeof(void*) == 8, Elf64_Ehdr, Elf32_Ehdr>;
using TSegment = std::conditional_t<sizeof(void*) == 8, Elf64_Phdr, Elf32_Phdr>;

template <typename TRecord>
bool ReadRecord(std::istream& file, TRecord& record) {
  file.read(reinterpret_cast<char*>(&record), sizeof record);
  return file.gcount() == sizeof record;
}

/// The number of bytes that the segments to be loaded need; 0 if they cannot be read.
std::uint64_t LoadedBytes(std::istream& file, const THeader& header) {
  std::uint64_t most = 0;
  for (unsigned int i = 0; i < header.e_phnum; ++i) {
    TSegment segment;
    if (!file.seekg(static_cast<std::streamoff>(header.e_phoff + i * sizeof segment)) || !ReadRecord(file, segment)) {
      return 0;
    }
    if (segment.p_type == PT_LOAD) {
      // p_filesz and not p_memsz: what exceeds the file is zero-filled memory (.bss) and needs no byte of it.
      // A forged sum that wraps around is more than any file has.
      const std::uint64_t end = std::uint64_t{segment.p_offset} + segment.p_filesz;
      most = std::max(most, end < segment.p_offset ? std::numeric_limits<std::uint64_t>::max() : end);
    }
  }
  return most;
}

#endif

}  // namespace

bool IsPluginFileName(const std::string& fileName) {
  // The suffix may stand anywhere in the name, as in "FeatureX.so.1.2", which is how versions of libraries are called.
  return fileName.rfind("Feature", 0) == 0 && fileName.find(kLibrarySuffix) != std::string::npos;
}

std::string PluginLoadPath(const std::string& fileName) {
  boost::system::error_code error;
  const boost::filesystem::path path(fileName);
  return path.is_absolute() ? fileName : (boost::filesystem::current_path(error) / path).string();
}

#ifdef __ELF__

std::string WhyNoPlugin(const std::string& fileName) {
  boost::system::error_code error;
  const auto status = boost::filesystem::status(fileName, error);
  if (!boost::filesystem::exists(status) &&
      boost::filesystem::is_symlink(boost::filesystem::symlink_status(fileName, error))) {
    return "it is a link to a file that is not there";
  }
  if (!boost::filesystem::is_regular_file(status)) {
    // The loader would wait for the other end of a pipe.
    return boost::filesystem::exists(status) ? "it is no library" : "";
  }
  std::ifstream file(fileName, std::ios::binary);
  THeader header;
  if (!file) {
    return {};
  }
  if (!ReadRecord(file, header) || !std::equal(header.e_ident, header.e_ident + SELFMAG, ELFMAG)) {
    return "it is no library";
  }
  // Comparing with the program itself instead of with constants is right on every processor that it is compiled for.
  std::ifstream program("/proc/self/exe", std::ios::binary);
  THeader own;
  if (!program || !ReadRecord(program, own)) {
    return {};
  }
  if (header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] || header.e_ident[EI_DATA] != own.e_ident[EI_DATA] ||
      header.e_machine != own.e_machine) {
    return "it is a library for another processor";
  }
  // Behind the comparison, since a number of two bytes means nothing before the order of bytes is known.
  if (header.e_type != ET_DYN) {
    return "it is no library";
  }
  // The loader maps what the header promises, and dies at the first page behind the end of the file.
  const std::uint64_t needed = LoadedBytes(file, header);
  // A size that cannot be asked for comes back as the largest number, and speaks against nothing.
  return needed == 0 || needed > boost::filesystem::file_size(fileName, error) ? "it is cut off or damaged" : "";
}

#else

std::string WhyNoPlugin(const std::string& /*fileName*/) {
  return {};
}

#endif

}  // namespace base
