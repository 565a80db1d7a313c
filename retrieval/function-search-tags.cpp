#include "retrieval/function-search-tags.h"

#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/var-database-index.h"

TFunctionSearchTags::TFunctionSearchTags() {
  name = "searchtags";
  returnsValue = true;
  returnType = "databaseindex";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        SearchTags",                                                       //
           "Description: Searches for a 'string' in a 'database' and stores the results",   //
           "             in an index variable, with the first image being the best match",  //
           "Syntax:      index = searchtags(database, \"tree\")",                           //
           "Returns:     'databaseindex'",                                                  //
           "Parameters:  1 - 'database'",                                                   //
           "             2 - 'string'"});
}

std::unique_ptr<TVar> TFunctionSearchTags::CreateReturnVariable() const {
  return std::make_unique<TVarDatabaseIndex>();
}

bool TFunctionSearchTags::ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) {
  auto& index = dynamic_cast<TVarDatabaseIndex&>(variable);
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  const std::string tag = StripQuotes(params[1]);
  if (database == nullptr) {
    Print("First parameter is not of type 'database'");
    return false;
  }
  if (database->GetImages().empty()) {
    Print("Database does not contain images");
    return false;
  }
  index.ClearEntries();
  index.SetDatabaseName(database->GetName());
  index.SetDatabaseFingerprint(database->GetFingerprint());
  index.SetImageName("");
  const auto& images = database->GetImages();
  std::size_t done = 0;
  for (; done < images.size() && ReportProgress(done, images.size()); ++done) {
    index.AddEntry(static_cast<std::int32_t>(done), images[done]->HasTag(tag) ? 0.0 : 1.0);
  }
  if (done < images.size()) {
    return Interrupted(done, images.size());
  }
  index.SortEntries();
  return true;
}
