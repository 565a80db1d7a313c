#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/var.h"
#include "kernels/rank-sort.h"

class TVarDatabase;
class TVarList;

using TDatabaseIndexEntry = kernels::TRankEntry;

/// One of the first results of a ranking, as it is shown to people.
struct TTopResult {
  std::string filename;
  /// Lines with the rank, counted from 1, the file name, the distance to six digits and the tags.
  std::string description;
};

/// A ranking, of type "databaseindex", best match first. It knows its database by the name of that variable, and by the
/// fingerprint of what was searched: it can be used only as long as that is what the name stands for.
class TVarDatabaseIndex : public TVar {
 public:
  static constexpr const char* kTypeName = "databaseindex";

  TVarDatabaseIndex();

  std::unique_ptr<TVar> CreateNew() const override;
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;

  /// Empties the ranking, for entries of the database's images. `queryName` is the file name of the query; empty if
  /// there is none.
  void Begin(const TVarDatabase& database, const std::string& queryName);
  void AddEntry(std::int32_t imageIndex, double distance) { entries.push_back({imageIndex, distance}); }
  /// Sorts by distance, smallest first. Entries of equal distance keep their order.
  void SortEntries() { kernels::RankSort(entries); }
  const std::vector<TDatabaseIndexEntry>& GetEntries() const { return entries; }

  const std::string& GetDatabaseName() const { return databaseName; }
  /// The file name of the query; empty if there was none.
  const std::string& GetImageName() const { return imageName; }

  /// What a window that shows the ranking is called for those who do not see it: the variable, and the query or else
  /// the database.
  std::string GetTitle() const;

  /// The database of the ranking, if it stands in the store, has the location and the images that were searched,
  /// and every entry fits them. Otherwise null, and the reason as a line of output.
  const TVarDatabase* FindDatabase(const TVarList& varList, std::string& reason) const;

  /// The first results, at most `count`. Nothing, and the reason as a line of output, where there is no database of the
  /// ranking.
  std::optional<std::vector<TTopResult>> FindTop(const TVarList& varList, std::size_t count, std::string& reason) const;

 private:
  std::string databaseName;
  /// That of what was searched (TVarDatabase::GetFingerprint).
  std::uint64_t databaseFingerprint = 0;
  std::string imageName;
  std::vector<TDatabaseIndexEntry> entries;
};
