#include "retrieval/function-load-mir-flickr-tags.h"

#include "base/native-path.h"
#include "engine/command-history.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/annotation.h"

TFunctionLoadMirFlickrTags::TFunctionLoadMirFlickrTags() {
  name = "loadmirflickrtags";
  SetParameters({"variable", "string"});
  SetHelp({"Name:        LoadMirFlickrTags",                                                         //
           "Description: Reads ground truth data for a 'database' that contains MIR-Flickr images",  //
           "Syntax:      LoadMirFlickrTags(db, \"C:\\MIR-Flickr\\tree.txt\")",                       //
           "Returns:     nothing",                                                                   //
           "Parameters:  1 - 'database'",                                                            //
           "             2 - string"});
}

bool TFunctionLoadMirFlickrTags::Execute(const std::vector<std::string>& params) {
  const auto* database = FindVariable<TVarDatabase>(params[0]);
  const std::string path = StripQuotes(params[1]);
  if (database == nullptr) {
    Print("First parameter is not of type 'database'");
    return false;
  }
  if (!base::IsRegularFile(path)) {
    Print("File not found");
    return false;
  }
  const std::string tag = AnnotationTag(path);
  TCommandHistory annotations;
  annotations.Load(path);
  for (const std::string& line : annotations.entries) {
    if (const auto position = AnnotatedPosition(line, database->GetImages().size())) {
      database->GetImages()[*position]->GetTags().push_back(tag);
    }
  }
  return true;
}
