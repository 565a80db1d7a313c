#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/var.h"

class TVarDatabase;
class TVarList;

/// One row of a ranking: the position of an image in its database, and its distance from the query.
struct TDatabaseIndexEntry {
  std::int32_t imageIndex;
  double distance;
};

/// One of the first results of a ranking, as people are told of it.
struct TTopResult {
  std::string filename;
  /// Lines with the rank, counted from 1, the file name, the distance to six digits and the tags.
  std::string description;
};

/// A ranking, of type "databaseindex", best match first. It knows its database only by the name of that variable and is
/// of use only as long as a database with the same images stands under it.
class TVarDatabaseIndex : public TVar {
 public:
  TVarDatabaseIndex();

  std::unique_ptr<TVar> CreateNew() const override;
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;

  /// Empties the ranking. The names stay.
  void ClearEntries() { entries.clear(); }
  void AddEntry(std::int32_t imageIndex, double distance) { entries.push_back({imageIndex, distance}); }
  /// Sorts by distance, smallest first. Entries of equal distance keep their order.
  void SortEntries();
  const std::vector<TDatabaseIndexEntry>& GetEntries() const { return entries; }

  const std::string& GetDatabaseName() const { return databaseName; }
  void SetDatabaseName(const std::string& name) { databaseName = name; }
  /// The file name of the query; empty if there was none.
  const std::string& GetImageName() const { return imageName; }
  void SetImageName(const std::string& name) { imageName = name; }

  /// What a window that shows the ranking is called for those who do not see it: the variable, and the query or else
  /// the database.
  std::string GetTitle() const;

  /// The database of the ranking, if it stands in the store and every entry fits its images. Otherwise null, and the
  /// reason as a line of output.
  const TVarDatabase* FindDatabase(const TVarList& varList, std::string& reason) const;

  /// The first results, at most `count`. Nothing, and the reason as a line of output, where there is no database of the
  /// ranking.
  std::optional<std::vector<TTopResult>> FindTop(const TVarList& varList, std::size_t count, std::string& reason) const;

 private:
  std::string databaseName;
  std::string imageName;
  std::vector<TDatabaseIndexEntry> entries;
};
