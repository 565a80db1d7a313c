#include "retrieval/var-database-index.h"

#include <algorithm>

#include "base/format-string.h"
#include "engine/var-list.h"
#include "images/var-database.h"
#include "images/var-image.h"

TVarDatabaseIndex::TVarDatabaseIndex() : TVar(kTypeName) {}

std::unique_ptr<TVar> TVarDatabaseIndex::CreateNew() const {
  return std::make_unique<TVarDatabaseIndex>();
}

void TVarDatabaseIndex::Assign(const TVar* source) {
  const auto* index = dynamic_cast<const TVarDatabaseIndex*>(source);
  if (index == nullptr || index == this) {
    return;
  }
  databaseName = index->databaseName;
  databaseFingerprint = index->databaseFingerprint;
  imageName = index->imageName;
  entries = index->entries;
}

void TVarDatabaseIndex::Begin(const TVarDatabase& database, const std::string& queryName) {
  // A hash and no copy of the file names, which would take several times the memory of the ranking.
  databaseName = database.GetName();
  databaseFingerprint = database.GetFingerprint();
  imageName = queryName;
  entries.clear();
}

std::string TVarDatabaseIndex::GetDescription() const {
  return "Database index";
}

std::string TVarDatabaseIndex::GetTitle() const {
  return imageName.empty() ? FormatString("Ranking '%s' of database '%s'", GetName().c_str(), databaseName.c_str())
                           : FormatString("Ranking '%s', query '%s'", GetName().c_str(), imageName.c_str());
}

const TVarDatabase* TVarDatabaseIndex::FindDatabase(const TVarList& varList, std::string& reason) const {
  // By name at each use: the database may have been replaced or removed since the search, and a pointer would dangle.
  const auto* database = dynamic_cast<const TVarDatabase*>(varList.Find(databaseName));
  if (database == nullptr) {
    reason = FormatString("Database '%s' not found", databaseName.c_str());
    return nullptr;
  }
  const std::size_t imageCount = database->GetImages().size();
  // Entries hold positions and no names: over another list of images they would silently mean other pictures. The
  // fingerprint is a hash and may agree by chance; the tests behind it keep every position inside the list even then.
  const bool fits = databaseFingerprint == database->GetFingerprint() && entries.size() == imageCount &&
                    std::all_of(entries.begin(), entries.end(), [&](const auto& entry) {
                      return entry.imageIndex >= 0 && static_cast<std::size_t>(entry.imageIndex) < imageCount;
                    });
  if (!fits) {
    reason = FormatString("Index does not match database '%s'", databaseName.c_str());
    return nullptr;
  }
  return database;
}

std::optional<std::vector<TTopResult>> TVarDatabaseIndex::FindTop(const TVarList& varList, std::size_t count,
                                                                  std::string& reason) const {
  const TVarDatabase* database = FindDatabase(varList, reason);
  if (database == nullptr) {
    return std::nullopt;
  }
  std::vector<TTopResult> results;
  for (std::size_t i = 0; i < std::min(count, entries.size()); ++i) {
    const TVarImage& image = *database->GetImages()[static_cast<std::size_t>(entries[i].imageIndex)];
    // Six significant digits: for the eye, and not to be read back.
    const std::string description = FormatString("Rank %d\n%s\nDistance %.6g", static_cast<int>(i + 1),
                                                 image.GetFilename().c_str(), entries[i].distance);
    results.push_back({image.GetFilename(), description + image.DescribeTags()});
  }
  return results;
}
