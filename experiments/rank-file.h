#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/file-replacement.h"
#include "base/mapped-file.h"
#include "experiments/measures.h"
#include "experiments/ranking.h"

/// What a result depends on: names and values, without TAB and line feed.
using TFingerprint = std::vector<std::pair<std::string, std::string>>;

/// A part of the rankings on disk: the fingerprint, then query by query and set by set the results of the query's
/// topics and the first pictures of its ranking.
class TRankFileWriter {
 public:
  TRankFileWriter(const std::string& path, const TFingerprint& fingerprint);

  void Add(const TQueryRanking& ranking);

  /// Puts the file in its place. False if it could not be written.
  bool Finish() { return file.Finish() && file.Commit(); }

 private:
  base::TFileReplacement file;
};

class TRankFile {
 public:
  /// Maps a file for queries with these numbers of topics. Nothing, and the reason as an end to "The part 1 of 2 of the
  /// rankings ..", if it is missing, was made from something else or is damaged.
  static std::optional<TRankFile> Open(const std::string& path, const TFingerprint& fingerprint,
                                       const std::vector<std::size_t>& topicCounts, std::size_t setCount,
                                       std::size_t topCount, std::string& reason);

  /// Queries count from the first of the part.
  std::span<const TTopicResult> GetResults(std::size_t query, std::size_t set) const;
  /// The pictures of the first ranks, as positions in the collection.
  std::span<const std::int32_t> GetTop(std::size_t query, std::size_t set) const;

 private:
  explicit TRankFile(const base::TMappedFile& theFile) : file(theFile) {}

  const std::byte* RecordOf(std::size_t query, std::size_t set) const;
  std::size_t RecordSize(std::size_t query) const;

  base::TMappedFile file;
  std::vector<std::size_t> topicCounts;
  /// Where the records of each query begin.
  std::vector<std::size_t> offsets;
  std::size_t setCount = 0;
  std::size_t topCount = 0;
};
