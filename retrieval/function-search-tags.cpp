#include "retrieval/commands.h"

#include "images/image-command.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/var-database-index.h"

namespace {

/// searchtags: ranks every image of a database by whether it carries a tag: at distance 0 if it does, at 1 if not.
class TFunctionSearchTags : public TImageCommand {
 public:
  TFunctionSearchTags()
      : TImageCommand(
            {.name = "searchtags", .kinds = {"variable", "string"}, .returns = Returns<TVarDatabaseIndex>(), .help = R"(
Name:        SearchTags
Description: Searches for a 'string' in a 'database' and stores the results
             in an index variable, with the first image being the best match
Syntax:      index = searchtags(database, "tree")
Returns:     'databaseindex'
Parameters:  1 - 'database'
             2 - 'string')"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& index = dynamic_cast<TVarDatabaseIndex&>(variable);
    const auto* database = RequireFilledDatabase(params, "Database does not contain images");
    const std::string tag = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    index.Begin(*database, "");
    std::int32_t imageIndex = 0;
    const auto step = [&](const TVarImage& image) {
      // Two distances only: the sort keeps ties in their order, so that the carriers come first, each group as in the
      // database.
      index.AddEntry(imageIndex++, image.HasTag(tag) ? 0.0 : 1.0);
      return true;
    };
    if (!ForEachImage(TImageSelection(*database), step)) {
      return false;
    }
    index.SortEntries();
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeSearchTags() {
  return std::make_unique<TFunctionSearchTags>();
}
