#include "retrieval/index-command.h"

std::optional<TRankingTop> TIndexCommand::RequireTop(const std::vector<std::string>& params, std::size_t most,
                                                     bool countsQuery) const {
  TRankingTop top = {FindVariable<TVarDatabaseIndex>(params[0]), {}, std::nullopt};
  if (top.index == nullptr) {
    Print("Parameter is not of type 'databaseindex'");
    return std::nullopt;
  }
  const std::string& query = top.index->GetImageName();
  // By default the query is shown; a ranking by a tag has none.
  if (!query.empty() && (params.size() < 2 || params[1] == "true")) {
    top.query = TTopResult{query, "Query\n" + query};
  }
  std::string reason;
  auto results = top.index->FindTop(*varList, most - (countsQuery && top.query ? 1 : 0), reason);
  if (!results) {
    Print(reason);
    return std::nullopt;
  }
  top.results = std::move(*results);
  return top;
}
