#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "engine/function.h"
#include "retrieval/var-database-index.h"

/// The top of a ranking, for a command that shows it.
struct TRankingTop {
  const TVarDatabaseIndex* index;
  /// Best first.
  std::vector<TTopResult> results;
  /// The query, if it is to be shown as well.
  std::optional<TTopResult> query;
};

/// Base of the commands that show the top of a ranking, and the query with it unless the second parameter is "false".
class TIndexCommand : public TFunction {
 protected:
  using TFunction::TFunction;

  /// The first `most` results, one less with a query if that counts as one. Nothing if the first parameter is no
  /// ranking or its database is gone; the reason has been printed.
  std::optional<TRankingTop> RequireTop(const std::vector<std::string>& params, std::size_t most,
                                        bool countsQuery) const;
};
