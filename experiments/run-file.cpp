#include "experiments/run-file.h"

std::string FormatRunLine(const std::string& qid, const std::string& document, std::size_t rank, std::size_t ranked,
                          const std::string& tag) {
  std::string line = qid;
  line.append(" Q0 ").append(document).append(1, ' ').append(std::to_string(rank)).append(1, ' ');
  // A whole number that falls by one a rank. Distances would tie, and evaluation programs break ties in ways of their
  // own.
  line.append(std::to_string(ranked - rank + 1)).append(1, ' ').append(tag).append(1, '\n');
  return line;
}

std::string FormatJudgement(const std::string& qid, const std::string& document) {
  return qid + " 0 " + document + " 1\n";
}
