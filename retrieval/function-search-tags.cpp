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
  index.SetImageName("");
  std::int32_t imageIndex = 0;
  for (const auto& image : database->GetImages()) {
    index.AddEntry(imageIndex++, image->HasTag(tag) ? 0.0 : 1.0);
  }
  index.SortEntries();
  return true;
}
