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

/// A ranking, of type "databaseindex", best match first. It knows its database by the name of that variable, and by the
/// fingerprint of what was searched: it is of use only as long as that stands under the name.
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
  /// The fingerprint of what was searched (TVarDatabase::GetFingerprint).
  void SetDatabaseFingerprint(std::uint64_t fingerprint) { databaseFingerprint = fingerprint; }
  /// The file name of the query; empty if there was none.
  const std::string& GetImageName() const { return imageName; }
  void SetImageName(const std::string& name) { imageName = name; }

  /// The database of the ranking, if it stands in the store, has the location and the images that were searched,
  /// and every entry fits them. Otherwise null, and the reason as a line of output.
  const TVarDatabase* FindDatabase(const TVarList& varList, std::string& reason) const;

  /// The file names of the first results, at most `count`. Nothing, and the reason as a line of output, where there is
  /// no database of the ranking.
  std::optional<std::vector<std::string>> FindTopFilenames(const TVarList& varList, std::size_t count,
                                                           std::string& reason) const;

 private:
  std::string databaseName;
  std::uint64_t databaseFingerprint = 0;
  std::string imageName;
  std::vector<TDatabaseIndexEntry> entries;
};
