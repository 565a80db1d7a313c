#include "experiments/run-reader.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/console.h"
#include "base/format-string.h"
#include "base/native-path.h"

namespace {

/// The fields of a line, which blanks and TABs part.
std::vector<std::string_view> SplitFields(std::string_view line) {
  constexpr std::string_view kBlanks = " \t";
  std::vector<std::string_view> fields;
  // Any number of blanks, as printf pads columns.
  for (std::size_t begin = line.find_first_not_of(kBlanks); begin != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
    fields.push_back(line.substr(begin, end - begin));
    begin = line.find_first_not_of(kBlanks, end);
  }
  return fields;
}

/// Nothing if not all of the text is such a number.
template <typename TNumber>
std::optional<TNumber> ParseNumber(std::string_view text) {
  TNumber number = {};
  // Without a locale, and without leave for blanks or a plus sign in front, unlike strtod.
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  // All of it: "12a" is no rank.
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string Quoted(std::string_view text) {
  return FormatString("'%.*s'", static_cast<int>(text.size()), text.data());
}

/// A line of a run that could be used so far.
struct TRunEntry {
  std::uint32_t rank;
  bool isRelevant;
  double score;
  std::size_t line;
};

class TRunReader {
 public:
  TRunReader(const std::string& thePath, const TJudgements& theJudgements, TDamageList& theDamage)
      : path(thePath),
        judgements(theJudgements),
        damage(theDamage),
        topics(theJudgements.qids.size()),
        seen(topics.size()) {}

  void AddLine(std::size_t number, std::string_view line) {
    const auto fields = SplitFields(line);
    if (fields.empty()) {
      return;
    }
    // The second field, "Q0", means nothing any more and is not looked at.
    const auto rank = fields.size() == 6 ? ParseNumber<std::uint32_t>(fields[3]) : std::nullopt;
    const auto score = fields.size() == 6 ? ParseNumber<double>(fields[4]) : std::nullopt;
    if (!rank || *rank == 0 || !score) {
      Note(number, "the line is not of the form qid Q0 docno rank score tag");
      return;
    }
    const auto topic = judgements.positions.find(std::string(fields[0]));
    if (topic == judgements.positions.end()) {
      // Once a topic: a run may have a thousand lines for each.
      if (unjudged.emplace(fields[0]).second) {
        Note(number,
             "topic " + Quoted(fields[0]) + " has no relevant document in the judgements; its lines are skipped");
      }
      return;
    }
    if (name.empty()) {
      name = fields[5];
    } else if (name != fields[5]) {
      Note(number, "the run is called " + Quoted(fields[5]) + " here, and " + Quoted(name) + " before");
    }
    // A document that counted twice could raise recall above 1.
    if (!seen[topic->second].emplace(fields[2]).second) {
      Note(number, "document " + Quoted(fields[2]) + " came before in topic " + Quoted(fields[0]));
      return;
    }
    // Looked up now, so that documents need not be kept.
    const bool isRelevant = judgements.relevant[topic->second].contains(std::string(fields[2]));
    topics[topic->second].push_back({*rank, isRelevant, *score, number});
  }

  TMeasuredRun Finish() {
    TMeasuredRun run = {name, {}};
    for (std::size_t topic = 0; topic < topics.size(); ++topic) {
      run.results.push_back(Measure(topic));
    }
    // In the order of the lines, whatever found them.
    std::stable_sort(notes.begin(), notes.end(), [](const TDamage& a, const TDamage& b) { return a.line < b.line; });
    damage.insert(damage.end(), notes.begin(), notes.end());
    return run;
  }

  bool HasName() const { return !name.empty(); }

 private:
  void Note(std::size_t line, const std::string& reason) { notes.push_back({path, line, reason}); }

  TTopicResult Measure(std::size_t topic) {
    std::vector<TRunEntry>& entries = topics[topic];
    // Stable, so that of two lines with one rank the first one in the file holds.
    std::stable_sort(entries.begin(), entries.end(),
                     [](const TRunEntry& a, const TRunEntry& b) { return a.rank < b.rank; });
    const std::string inTopic = " in topic " + Quoted(judgements.qids[topic]);
    std::vector<std::uint32_t> ranks;
    std::uint32_t last = 0;
    const TRunEntry* before = nullptr;
    for (const TRunEntry& entry : entries) {
      if (entry.rank == last) {
        Note(entry.line, FormatString("rank %u came before%s", entry.rank, inTopic.c_str()));
        continue;
      }
      // last + 1 cannot wrap: behind the largest number stands only its like, which was passed over.
      if (entry.rank > last + 1) {
        const std::string until = entry.rank > last + 2 ? FormatString(" to %u", entry.rank - 1) : std::string();
        Note(entry.line, FormatString("rank %u%s is missing%s", last + 1, until.c_str(), inTopic.c_str()));
      }
      // A score may read "nan", which is above nothing and below nothing and is passed over in silence.
      if (before != nullptr && entry.score > before->score) {
        Note(entry.line, FormatString("the score rises from rank %u to rank %u%s", last, entry.rank, inTopic.c_str()));
      }
      if (entry.isRelevant) {
        ranks.push_back(entry.rank);
      }
      last = entry.rank;
      before = &entry;
    }
    // The number of ranks is the last one that is written, missing ones included.
    return MeasureTopic(ranks, judgements.relevant[topic].size(), last);
  }

  const std::string& path;
  const TJudgements& judgements;
  TDamageList& damage;
  TDamageList notes;
  std::string name;
  std::vector<std::vector<TRunEntry>> topics;
  std::vector<std::unordered_set<std::string>> seen;
  std::unordered_set<std::string> unjudged;
};

/// Calls `take` with the number and the text of each line. False if the file cannot be read.
template <typename TTake>
bool ForEachLine(const std::string& path, const TTake& take) {
  // Opening a named pipe would wait for its other end.
  if (!base::IsRegularFile(path)) {
    return false;
  }
  base::TLineReader reader(path);
  if (!reader.IsOpen()) {
    return false;
  }
  std::string line;
  for (std::size_t number = 1; reader.Next(line); ++number) {
    take(number, std::string_view(line));
  }
  return !reader.HasFailed();
}

}  // namespace

std::optional<TJudgements> ReadJudgements(const std::string& path, TDamageList& damage, std::string& reason) {
  TJudgements judgements;
  std::unordered_set<std::string> judged;
  const bool isRead = ForEachLine(path, [&](std::size_t number, std::string_view line) {
    const auto fields = SplitFields(line);
    if (fields.empty()) {
      return;
    }
    const auto relevance = fields.size() == 4 ? ParseNumber<long>(fields[3]) : std::nullopt;
    if (!relevance) {
      damage.push_back({path, number, "the line is not of the form qid 0 docno relevance"});
      return;
    }
    // A blank cannot stand in either, so that the pair is unique.
    // Of two judgements the first one counts, whatever the second says, as with ranks and documents of a run.
    if (!judged.insert(std::string(fields[0]) + " " + std::string(fields[2])).second) {
      damage.push_back(
          {path, number, "document " + Quoted(fields[2]) + " was judged before in topic " + Quoted(fields[0])});
      return;
    }
    // Grades above 1 count as 1: all measures here are binary. Below 0 some collections mark spam.
    if (*relevance > 0) {
      const auto [topic, isNew] = judgements.positions.try_emplace(std::string(fields[0]), judgements.qids.size());
      // In the order in which the file names them first, which is that of the tables.
      if (isNew) {
        judgements.qids.emplace_back(fields[0]);
        judgements.relevant.emplace_back();
      }
      judgements.relevant[topic->second].emplace(fields[2]);
    }
  });
  if (!isRead) {
    reason = FormatString("Judgements '%s' cannot be read", path.c_str());
    return std::nullopt;
  }
  return judgements;
}

std::optional<TMeasuredRun> ReadRun(const std::string& path, const TJudgements& judgements, TDamageList& damage,
                                    std::string& reason) {
  TRunReader reader(path, judgements, damage);
  if (!ForEachLine(path, [&](std::size_t number, std::string_view line) { reader.AddLine(number, line); })) {
    reason = FormatString("Run '%s' cannot be read", path.c_str());
    return std::nullopt;
  }
  if (!reader.HasName()) {
    reason =
        FormatString("Run '%s' holds no line of the form qid Q0 docno rank score tag for a judged topic", path.c_str());
    return std::nullopt;
  }
  return reader.Finish();
}
