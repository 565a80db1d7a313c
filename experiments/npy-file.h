#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>

#include "base/mapped-file.h"

/// A table of numbers in NumPy's format, version 1.0: float64, little-endian, C order. (NumPy Enhancement Proposal 1.)
class TNpyFile {
 public:
  /// Maps a file. Nothing if it cannot be read or is no such table. Its rows may be fewer than its header says where
  /// the file is still being written.
  static std::optional<TNpyFile> Open(const std::string& path);

  std::size_t GetColumns() const { return columns; }
  /// The whole rows that are there.
  std::size_t GetRows() const { return rows; }
  /// True if the file holds all rows of its header and nothing else.
  bool IsComplete() const { return isComplete; }
  const double* GetRow(std::size_t row) const { return values + row * columns; }

 private:
  TNpyFile(const base::TMappedFile& theFile) : file(theFile) {}

  base::TMappedFile file;
  const double* values = nullptr;
  std::size_t rows = 0;
  std::size_t columns = 0;
  bool isComplete = false;
};

/// The first bytes of such a file; their number is a multiple of 64.
std::string NpyHeader(std::size_t rows, std::size_t columns);
