#include "experiments/npy-file.h"

#include <algorithm>
#include <bit>
#include <string_view>

#include "base/format-string.h"

static_assert(std::endian::native == std::endian::little, "Mapped files are read as they are.");

namespace {

constexpr std::string_view kMagic("\x93NUMPY\x01\x00", 8);
constexpr std::size_t kPrefix = kMagic.size() + 2;

}  // namespace

std::string NpyHeader(std::size_t rows, std::size_t columns) {
  std::string text = FormatString("{'descr': '<f8', 'fortran_order': False, 'shape': (%zu, %zu), }", rows, columns);
  // The format wants the whole header to end in a line feed and at a multiple of 64 bytes, filled up with blanks, so
  // that the numbers behind it are aligned in a mapping.
  text.resize((kPrefix + text.size() + 1 + 63) / 64 * 64 - kPrefix - 1, ' ');
  text += '\n';
  std::string header(kMagic);
  header += static_cast<char>(text.size() & 0xFF);
  header += static_cast<char>(text.size() >> 8);
  return header + text;
}

std::optional<TNpyFile> TNpyFile::Open(const std::string& path) {
  const auto mapped = base::TMappedFile::Open(path);
  if (!mapped || mapped->GetSize() < kPrefix) {
    return std::nullopt;
  }
  const std::string_view bytes(reinterpret_cast<const char*>(mapped->GetBytes()), mapped->GetSize());
  // As many bytes as the header of a table of this program has at most: 128 less the prefix. sscanf needs a zero at the
  // end, which the mapping does not have.
  const std::string start(bytes.substr(kPrefix, 118));
  std::size_t rows = 0;
  std::size_t columns = 0;
  if (std::sscanf(start.c_str(), "{'descr': '<f8', 'fortran_order': False, 'shape': (%zu, %zu), }", &rows, &columns) !=
      2) {
    return std::nullopt;
  }
  // Byte for byte what this program writes. Other writers order their fields in other ways; such files are taken for
  // foreign and extracted anew.
  const std::string header = NpyHeader(rows, columns);
  if (!bytes.starts_with(header)) {
    return std::nullopt;
  }
  TNpyFile file(*mapped);
  file.values = reinterpret_cast<const double*>(mapped->GetBytes() + header.size());
  file.columns = columns;
  const std::size_t numbers = (bytes.size() - header.size()) / sizeof(double);
  // While a file is being written it has fewer rows than its header says, and perhaps a part of one.
  file.rows = columns == 0 ? rows : std::min(rows, numbers / columns);
  file.isComplete = bytes.size() == header.size() + rows * columns * sizeof(double);
  return file;
}
