#include "retrieval/commands.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/text.h"
#include "engine/function.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/feature-distance.h"
#include "retrieval/var-database-index.h"

namespace {

/// How many images are compared between two looks at the window: some milliseconds' worth.
constexpr std::size_t kImagesAtATime = 32768;

/// The features that the first image of the database and the query have in common.
std::vector<std::string> CommonFeatures(const TVarDatabase& database, const TVarImage& query) {
  // In the order of the database, since sums of doubles depend on it and should not on how the query was made.
  auto names = database.GetImages().front()->GetImageSegment().GetFeatures().GetNames();
  const TFeatureVectorList& wanted = query.GetImageSegment().GetFeatures();
  // Names decide, not lengths: a vector of another length than the query's puts an image at infinity if it is shorter,
  // and counts up to the query's length if it is longer.
  std::erase_if(names, [&](const std::string& name) { return wanted.Find(name) == nullptr; });
  return names;
}

/// searchimage: ranks every image of a database by its distance from a query image, over the features that the first
/// image of the database and the query have in common.
class TFunctionSearchImage : public TFunction {
 public:
  TFunctionSearchImage()
      : TFunction({.name = "searchimage",
                   .kinds = {"variable", "variable"},
                   .returns = Returns<TVarDatabaseIndex>(),
                   .help = R"(
Name:        SearchImage
Description: Searches for an 'image' in a 'database' and stores the results
             in an index variable, with the first image being the best match
Syntax:      index = searchimage(database, image)
Returns:     'databaseindex'
Parameters:  1 - 'database'
             2 - 'image')"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& index = dynamic_cast<TVarDatabaseIndex&>(variable);
    const auto* database = Require<TVarDatabase>(params, 1);
    const auto* query = database == nullptr ? nullptr : Require<TVarImage>(params, 2);
    if (query == nullptr) {
      return false;
    }
    if (database->GetImages().empty()) {
      return Fail("Database does not contain images");
    }
    featureNames = CommonFeatures(*database, *query);
    if (featureNames.empty()) {
      return Fail("No features found to compare images with");
    }
    Print("Matching with features: " + base::Join(featureNames, ", "));
    // The old ranking goes only now, when nothing can refuse any more; a search that the user ends leaves the variable
    // to be removed by the controller.
    index.Begin(*database, query->GetFilename());
    const auto& images = database->GetImages();
    std::vector<const TFeatureVectorList*> lists;
    bool anyCompares = false;
    std::size_t done = 0;
    while (done < images.size() && ReportProgress(done, images.size())) {
      lists.clear();
      for (std::size_t i = done; i < std::min(done + kImagesAtATime, images.size()); ++i) {
        lists.push_back(&images[i]->GetImageSegment().GetFeatures());
      }
      for (const double distance : GetDistances(query->GetImageSegment().GetFeatures(), featureNames, lists)) {
        index.AddEntry(static_cast<std::int32_t>(done++), distance);
        anyCompares = anyCompares || std::isfinite(distance);
      }
    }
    if (done < images.size()) {
      return Interrupted(done, images.size());
    }
    if (!anyCompares) {
      Print("No image can be compared");
    }
    index.SortEntries();
    return true;
  }

 private:
  /// The features of the latest search.
  std::vector<std::string> featureNames;
};

}  // namespace

std::unique_ptr<TFunction> MakeSearchImage() {
  return std::make_unique<TFunctionSearchImage>();
}
