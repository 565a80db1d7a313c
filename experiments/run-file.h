#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "experiments/damage.h"

/// Rankings and judgements in the form that evaluation programs of information retrieval read: a run has lines "qid Q0
/// docno rank score tag", judgements have lines "qid 0 docno relevance", all parted by blanks. (E. Voorhees, D. Harman,
/// TREC: Experiment and Evaluation in Information Retrieval, 2005.)

/// A line of a run. The score falls strictly with the rank, because evaluation programs sort by it: it is the number of
/// ranked documents less the rank, plus 1.
std::string FormatRunLine(const std::string& qid, const std::string& document, std::size_t rank, std::size_t ranked,
                          const std::string& tag);

std::string FormatJudgement(const std::string& qid, const std::string& document);
