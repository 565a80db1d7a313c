#include "experiments/rank-file.h"

#include <string_view>

namespace {

// Records hold TTopicResult as it lies in memory. A change that keeps its size, such as another order of measures, has
// to change this number: between two builds of one version nothing else in the file would tell.
constexpr std::string_view kMagic = "tessimar-experiment rankings 1\n";

std::string FormatHeader(const TFingerprint& fingerprint) {
  std::string header(kMagic);
  for (const auto& [name, value] : fingerprint) {
    header += name + "\t" + value + "\n";
  }
  // Numbers begin at a multiple of eight.
  header.resize((header.size() + 8) / 8 * 8 - 1, ' ');
  return header + "\n";
}

/// The padding keeps the next record's doubles aligned.
std::size_t TopSize(std::size_t topCount) {
  return (topCount + 1) / 2 * 2 * sizeof(std::int32_t);
}

/// What differs between two headers, in words.
std::string DescribeDifference(std::string_view header, const TFingerprint& fingerprint) {
  for (const auto& [name, value] : fingerprint) {
    const std::string line = "\n" + name + "\t" + value + "\n";
    if (header.find(line) == std::string_view::npos) {
      return "was made with another " + name;
    }
  }
  return "is damaged";
}

}  // namespace

TRankFileWriter::TRankFileWriter(const std::string& path, const TFingerprint& fingerprint) : file(path) {
  file.Write(FormatHeader(fingerprint));
}

void TRankFileWriter::Add(const TQueryRanking& ranking) {
  // Doubles without padding between them: the same results are the same bytes.
  file.Write({reinterpret_cast<const char*>(ranking.results.data()), ranking.results.size() * sizeof(TTopicResult)});
  // All rankings of a plan keep the same number of ranks, so that a record needs no length of its own.
  std::string top(reinterpret_cast<const char*>(ranking.top.data()), ranking.top.size() * sizeof(std::int32_t));
  top.resize(TopSize(ranking.top.size()));
  file.Write(top);
}

std::optional<TRankFile> TRankFile::Open(const std::string& path, const TFingerprint& fingerprint,
                                         const std::vector<std::size_t>& topicCounts, std::size_t setCount,
                                         std::size_t topCount, std::string& reason) {
  const auto mapped = base::TMappedFile::Open(path);
  if (!mapped) {
    reason = "is missing; run the step rank for it";
    return std::nullopt;
  }
  const std::string_view bytes(reinterpret_cast<const char*>(mapped->GetBytes()), mapped->GetSize());
  const std::string header = FormatHeader(fingerprint);
  if (!bytes.starts_with(header)) {
    // The header of the other plan may be longer than ours, by the names of its sets for one. Records are not searched.
    reason = bytes.starts_with(kMagic) ? DescribeDifference(bytes.substr(0, 2 * header.size() + 4096), fingerprint)
                                       : "is damaged";
    return std::nullopt;
  }
  TRankFile file(*mapped);
  file.topicCounts = topicCounts;
  file.setCount = setCount;
  file.topCount = topCount;
  std::size_t offset = header.size();
  for (std::size_t query = 0; query < topicCounts.size(); ++query) {
    file.offsets.push_back(offset);
    offset += file.RecordSize(query) * setCount;
  }
  // The sizes follow from the plan: a file that was cut off shows here.
  if (offset != bytes.size()) {
    reason = "is damaged";
    return std::nullopt;
  }
  return file;
}

std::size_t TRankFile::RecordSize(std::size_t query) const {
  return topicCounts[query] * sizeof(TTopicResult) + TopSize(topCount);
}

const std::byte* TRankFile::RecordOf(std::size_t query, std::size_t set) const {
  return file.GetBytes() + offsets[query] + set * RecordSize(query);
}

std::span<const TTopicResult> TRankFile::GetResults(std::size_t query, std::size_t set) const {
  // Read in place: mappings begin at a page, and header and records keep multiples of eight.
  return {reinterpret_cast<const TTopicResult*>(RecordOf(query, set)), topicCounts[query]};
}

std::span<const std::int32_t> TRankFile::GetTop(std::size_t query, std::size_t set) const {
  const std::byte* top = RecordOf(query, set) + topicCounts[query] * sizeof(TTopicResult);
  return {reinterpret_cast<const std::int32_t*>(top), topCount};
}
