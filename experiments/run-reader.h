#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "experiments/damage.h"
#include "experiments/measures.h"

/// What is relevant to each topic of other programs' rankings.
struct TJudgements {
  /// The topics that have a relevant document, in the order in which the file names them first.
  std::vector<std::string> qids;
  std::unordered_map<std::string, std::size_t> positions;
  /// By topic.
  std::vector<std::unordered_set<std::string>> relevant;
};

/// Reads lines "qid 0 docno relevance"; a relevance above 0 is relevant. A line of another form, or a document that is
/// judged twice, goes to `damage`. Nothing, and the reason, if the file cannot be read.
std::optional<TJudgements> ReadJudgements(const std::string& path, TDamageList& damage, std::string& reason);

/// A run that was measured.
struct TMeasuredRun {
  /// What the lines say in their sixth field.
  std::string name;
  /// By topic of the judgements; a topic without lines has 0 in every measure.
  std::vector<TTopicResult> results;
};

/// Reads lines "qid Q0 docno rank score tag" in any order and measures each topic in the order of its ranks, which
/// count from 1. What breaks that form goes to `damage` and is skipped: a line of another form, a rank or a document
/// that came before (the rank then stays without a document), a topic without judgements. A rank that is missing, and a
/// score that rises with the rank, go there too; the ranks count as they are written. Nothing, and the reason, if the
/// file cannot be read or holds no line that can be used.
std::optional<TMeasuredRun> ReadRun(const std::string& path, const TJudgements& judgements, TDamageList& damage,
                                    std::string& reason);
