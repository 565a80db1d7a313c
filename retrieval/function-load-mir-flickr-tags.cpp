#include "retrieval/commands.h"

#include "base/native-path.h"
#include "engine/command-history.h"
#include "engine/function.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/annotation.h"

namespace {

/// loadmirflickrtags: tags images of a database by an annotation file that lists their positions, counted from 1. The
/// name of the file, up to its first full stop, is the tag.
class TFunctionLoadMirFlickrTags : public TFunction {
 public:
  TFunctionLoadMirFlickrTags()
      : TFunction({.name = "loadmirflickrtags", .kinds = {"variable", "string"}, .help = R"(
Name:        LoadMirFlickrTags
Description: Reads ground truth data for a 'database' that contains MIR-Flickr images
Syntax:      LoadMirFlickrTags(db, "C:\MIR-Flickr\tree.txt")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = Require<TVarDatabase>(params, 1);
    const std::string path = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    TCommandHistory annotations;
    if (!LoadLines(path, annotations)) {
      return false;
    }
    const std::string tag = AnnotationTag(path);
    int strays = 0;
    for (const std::string& line : annotations.entries) {
      if (const auto position = AnnotatedPosition(line, database->GetImages().size())) {
        // Even if it stands there: a file that names an image twice tags it twice. Whoever asks for a tag looks whether
        // it stands there at least once.
        database->GetImages()[*position]->GetTags().push_back(tag);
      } else {
        ++strays;
      }
    }
    PrintCount(strays, "lines name no image");
    if (static_cast<std::size_t>(strays) == annotations.entries.size()) {
      Print("No image was tagged");
    }
    return true;
  }
};

}  // namespace

std::unique_ptr<TFunction> MakeLoadMirFlickrTags() {
  return std::make_unique<TFunctionLoadMirFlickrTags>();
}
