#include "retrieval/function-load-mir-flickr-tags.h"

#include <cstdlib>
#include <string_view>

#include "base/format-string.h"
#include "base/native-path.h"
#include "engine/command-history.h"
#include "images/var-database.h"
#include "images/var-image.h"

TFunctionLoadMirFlickrTags::TFunctionLoadMirFlickrTags()
    : TFunction({.name = "loadmirflickrtags", .kinds = {"variable", "string"}, .help = R"(
Name:        LoadMirFlickrTags
Description: Reads ground truth data for a 'database' that contains MIR-Flickr images
Syntax:      LoadMirFlickrTags(db, "C:\MIR-Flickr\tree.txt")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

bool TFunctionLoadMirFlickrTags::Execute(const std::vector<std::string>& params) {
  const auto* database = Require<TVarDatabase>(params, 1);
  const std::string path = StripQuotes(params[1]);
  if (database == nullptr) {
    return false;
  }
  TCommandHistory annotations;
  if (!LoadLines(path, annotations)) {
    return false;
  }
  const std::string_view filename = base::FileNameOf(path);
  const std::string tag(filename.substr(0, filename.find('.')));
  int strays = 0;
  for (const std::string& line : annotations.entries) {
    // A number beyond all bounds comes back as the largest there is, and a text that is none as 0.
    const long long number = std::strtoll(line.c_str(), nullptr, 10);
    if (number >= 1 && static_cast<unsigned long long>(number) <= database->GetImages().size()) {
      database->GetImages()[static_cast<std::size_t>(number) - 1]->GetTags().push_back(tag);
    } else {
      ++strays;
    }
  }
  if (strays > 0) {
    Print(FormatString("%d lines name no image", strays));
  }
  if (static_cast<std::size_t>(strays) == annotations.entries.size()) {
    Print("No image was tagged");
  }
  return true;
}
