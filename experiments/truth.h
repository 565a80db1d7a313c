#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "experiments/collection.h"
#include "experiments/damage.h"

/// Which pictures carry which tag.
struct TTruth {
  /// The carriers of each tag as positions in the collection, ascending, each once. Tags are in byte order.
  std::map<std::string, std::vector<std::uint32_t>> carriers;
  /// SHA-256 of all pairs of tag and picture, whatever files they came from.
  std::string digest;
};

/// Reads the truth of a collection from its classes and from files. A path that is a directory stands for its files
/// *.txt in byte order. A file that ends in .txt is an annotation file: the tag is its name up to the first full stop,
/// each line is a position in the collection counted from 1. Any other file is a table of lines "name TAB tag" below an
/// optional line "file TAB tag". Lines end in LF or CR LF, blank ones do not count. A line that cannot be used goes to
/// `damage`. Nothing, and the reason, if a path cannot be read.
std::optional<TTruth> ReadTruth(const TPictureCollection& collection, const std::vector<std::string>& paths,
                                TDamageList& damage, std::string& reason);

/// The pictures that the lines of a file name, as positions, ascending. A name without a picture, or one named twice,
/// goes to `damage`. Nothing, and the reason, if the file cannot be read.
std::optional<std::vector<std::uint32_t>> ReadQueries(const TPictureCollection& collection, const std::string& path,
                                                      TDamageList& damage, std::string& reason);

/// The lines of a file with their numbers: ended by LF or CR LF, the last with or without, blank ones left out.
struct TNumberedLine {
  std::size_t number;
  std::string text;
};
std::optional<std::vector<TNumberedLine>> ReadNumberedLines(const std::string& path);
