#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/var.h"
#include "retrieval/ranking.h"

class TVarDatabase;
class TVarList;

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
  void SortEntries() { SortByDistance(entries); }
  const std::vector<TDatabaseIndexEntry>& GetEntries() const { return entries; }

  const std::string& GetDatabaseName() const { return databaseName; }
  void SetDatabaseName(const std::string& name) { databaseName = name; }
  /// The file name of the query; empty if there was none.
  const std::string& GetImageName() const { return imageName; }
  void SetImageName(const std::string& name) { imageName = name; }

  /// The database of the ranking, if it stands in the store and every entry fits its images. Otherwise null, and the
  /// reason as a line of output.
  const TVarDatabase* FindDatabase(const TVarList& varList, std::string& reason) const;

  /// The file names of the first results, at most `count`. Nothing, and the reason as a line of output, where there is
  /// no database of the ranking.
  std::optional<std::vector<std::string>> FindTopFilenames(const TVarList& varList, std::size_t count,
                                                           std::string& reason) const;

 private:
  std::string databaseName;
  std::string imageName;
  std::vector<TDatabaseIndexEntry> entries;
};
