#include "base/native-path.h"
#include "engine/command-factories.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// loadimage: an image variable for an existing file. The file is not opened, so it may be no image at all.
class TFunctionLoadImage : public TFunction {
 public:
  TFunctionLoadImage()
      : TFunction({.name = "loadimage", .kinds = {"string"}, .returns = Returns<TVarImage>(), .help = R"(
Name:        LoadImage
Description: Loads an image into an 'image' variable
Syntax:      a = loadimage("C:\Directory\File.jpg")
Returns:     'image'
Parameters:  1 - string)"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& image = dynamic_cast<TVarImage&>(variable);
    const std::string filename = StripQuotes(params[0]);
    if (!base::IsRegularFile(filename)) {
      return Fail("File does not exist");
    }
    image.SetFilename(filename);
    // The variable may have held another image: its vectors would be taken for those of the new file. Tags stay; they
    // are the user's.
    image.GetImageSegment().GetFeatures().Clear();
    ClearSegments(image.GetSegments());
    return true;
  }
};

/// loaddatabase: a database variable for the images of a directory.
class TFunctionLoadDatabase : public TFunction {
 public:
  TFunctionLoadDatabase()
      : TFunction({.name = "loaddatabase", .kinds = {"string"}, .returns = Returns<TVarDatabase>(), .help = R"(
Name:        LoadDatabase
Description: Loads a directory with images into a 'database' variable
Syntax:      a = loaddatabase("C:\Directory")
Returns:     'database'
Parameters:  1 - string)"}) {}

  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override {
    auto& database = dynamic_cast<TVarDatabase&>(variable);
    const std::string path = StripQuotes(params[0]);
    if (!base::IsDirectory(path)) {
      return Fail(base::Exists(path) ? "Path is not a directory" : "Path not found");
    }
    // Drawn before the scan begins, which takes seconds for a hundred thousand files on a network share.
    Print("Scanning..");
    ProcessEvents();
    // An absent path was refused above, so that an earlier database under this name keeps its images until the new one
    // is known to be a directory.
    database.SetLocation(path);
    return database.ScanDirectory() || Fail("Directory cannot be read");
  }
};

}  // namespace

const TFunctionFactory kMakeLoadImage = MakeFunction<TFunctionLoadImage>;
const TFunctionFactory kMakeLoadDatabase = MakeFunction<TFunctionLoadDatabase>;
