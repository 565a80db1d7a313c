#include <algorithm>
#include <unordered_set>

#include "base/abandoned-files.h"
#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "engine/command-factories.h"
#include "features/feature-list.h"
#include "features/feature-sources.h"
#include "features/feature-store.h"
#include "features/segment-feature.h"
#include "images/image-command.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"
#include "images/picture-report.h"
#include "images/var-database.h"
#include "images/var-image.h"

namespace {

/// updatefeature: computes a feature for an image, or for every image of a database, on the whole image and on each of
/// its segments. The one place where pixels meet features.
class TFunctionUpdateFeature : public TImageCommand {
 public:
  TFunctionUpdateFeature()
      : TImageCommand({.name = "updatefeature", .kinds = {"variable", "string"}, .help = R"(
Name:        UpdateFeature
Description: Calculates a feature for an 'image' or a 'database' and stores the
             results in that variable. Feature arguments can be given as 
             parameters 3..n.
Syntax:      updatefeature(a, "lbp")
Returns:     nothing
Parameters:  1 - 'image' or 'database'
             2 - string
             3..n - integer)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const TFeature* feature = featureList->Find(StripQuotes(params[1]));
    if (!images) {
      return false;
    }
    if (feature == nullptr) {
      return Fail("Feature not found");
    }
    int count = 0;
    return ProcessImages(*images, [&](TVarImage& image, TPictureReport& report) {
      if (!ProcessImage(*feature, image, report)) {
        return false;
      }
      // Some seconds' worth of pictures: often enough to show life, seldom enough to leave the output readable.
      if (++count % 100 == 0) {
        ProcessEvents();
        Print(FormatString("%d images processed", count));
      }
      return true;
    });
  }

 private:
  /// Decodes the file once for all segments. A file that cannot be read acts as a picture of 0 x 0.
  bool ProcessImage(const TFeature& feature, TVarImage& image, TPictureReport& report) const {
    TImageRGB color;
    const bool isRead = report.Load(image.GetFilename(), color);
    TImageGray gray;
    if (feature.NeedsGrayscale()) {
      color.ToGray(gray);
    }
    TImageSegmentRect& whole = image.GetImageSegment();
    // The rectangle is known only now: an image variable is a file name until somebody decodes it.
    whole.SetX(0);
    whole.SetY(0);
    whole.SetWidth(color.GetWidth());
    whole.SetHeight(color.GetHeight());
    // The first failure ends the command: a feature that cannot say its length fails on every segment.
    const auto process = [&](TImageSegment& segment) { return UpdateSegmentFeature(feature, color, gray, segment); };
    bool computed = process(whole);
    if (computed) {
      whole.GetFeatures().Find(feature.GetName())->SetLacksPicture(!isRead);
    }
    computed = computed && std::all_of(image.GetSegments().begin(), image.GetSegments().end(),
                                       [&](const auto& segment) { return process(*segment); });
    return computed || Fail(FormatString("Feature '%s' has an invalid length", feature.GetName().c_str()));
  }
};

/// removefeature: takes the vectors of that name, which need not be a known feature, from an image or from every image
/// of a database, and from their segments.
class TFunctionRemoveFeature : public TImageCommand {
 public:
  TFunctionRemoveFeature()
      : TImageCommand({.name = "removefeature", .kinds = {"variable", "string"}, .help = R"(
Name:        RemoveFeature
Description: Removes a feature from an 'image' or a 'database'
Syntax:      RemoveFeature(image, "lbp")
Returns:     nothing
Parameters:  1 - 'image' or 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto images = RequireImages(params);
    const std::string featureName = StripQuotes(params[1]);
    if (!images) {
      return false;
    }
    if (images->GetSize() == 0) {
      return Fail("No images in database");
    }
    return ForEachImage(*images, [&](TVarImage& image) {
      image.GetImageSegment().GetFeatures().Remove(featureName);
      for (const auto& segment : image.GetSegments()) {
        segment->GetFeatures().Remove(featureName);
      }
      return true;
    });
  }
};

/// savefeature: writes one feature of all images of a database into "FeatureStorage". Images without it are
/// skipped, and so are those whose picture could not be read when it was computed.
class TFunctionSaveFeature : public TImageCommand {
 public:
  TFunctionSaveFeature()
      : TImageCommand({.name = "savefeature", .kinds = {"variable", "string"}, .help = R"(
Name:        SaveFeature
Description: Saves a feature from a 'database' in local storage
Syntax:      savefeature(database, "lbp")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = RequireFilledDatabase(params, "No images in database");
    const std::string featureName = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    // The first image stands for all; images that lack the feature are skipped and counted.
    if (database->GetImages().front()->GetImageSegment().GetFeatures().Find(featureName) == nullptr) {
      return Fail("Feature not found in database");
    }
    TFeatureSources sources(featureName);
    if (!sources.IsKnown()) {
      return Fail(FormatString("File '%s' cannot be read", sources.GetPath().c_str()));
    }
    base::RemoveAbandonedFiles(kFeatureDirectory);
    int skipped = 0;
    int unread = 0;
    int replaced = 0;
    std::unordered_set<std::string> saved;
    std::string failedFile;
    const auto step = [&](const TVarImage& image) {
      const TFeatureVector* vector = image.GetImageSegment().GetFeatures().Find(featureName);
      // Of a picture that could not be read, what an earlier run stored is better than numbers of nothing.
      if (vector == nullptr || vector->GetLacksPicture()) {
        ++(vector == nullptr ? skipped : unread);
        return true;
      }
      const std::string path = StoredFeaturePath(featureName, image.GetFilename());
      if (!SaveStoredFeature(path, *vector)) {
        // Ends the command: where one file cannot be written, as on a full disk, the others cannot either.
        failedFile = path;
        return false;
      }
      sources.Note(base::FileNameOf(path), image.GetFilename());
      // A backup such as "im1.jpg~" belongs to a database as well, and has the stem of its picture.
      replaced += saved.insert(path).second ? 0 : 1;
      return true;
    };
    const auto atEnd = [&] {
      PrintCount(skipped, "images without the feature skipped");
      PrintCount(unread, "images that could not be read are not saved");
      PrintCount(replaced, "images are not saved: others behind them have the same stem");
    };
    const bool succeeded = ForEachImage(TImageSelection(*database), step, atEnd);
    // Whatever ended the loop, what was saved so far has its sources.
    if (!sources.Save() && failedFile.empty()) {
      failedFile = sources.GetPath();
    }
    if (!failedFile.empty()) {
      return Fail(FormatString("File '%s' cannot be written", failedFile.c_str()));
    }
    return succeeded;
  }
};

/// loadfeature: reads one feature of the running system for all images of a database from "FeatureStorage". Images
/// without a file there, or with one of another length than the feature's, stay as they are, and are counted; so are
/// vectors that are known to come from other pictures.
class TFunctionLoadFeature : public TImageCommand {
 public:
  TFunctionLoadFeature()
      : TImageCommand({.name = "loadfeature", .kinds = {"variable", "string"}, .help = R"(
Name:        LoadFeature
Description: Loads a feature for a 'database' from local storage
Syntax:      loadfeature(database, "lbp")
Returns:     nothing
Parameters:  1 - 'database'
             2 - string)"}) {}

  bool Execute(const std::vector<std::string>& params) override {
    const auto* database = RequireFilledDatabase(params, "No images in database");
    const std::string featureName = StripQuotes(params[1]);
    if (database == nullptr) {
      return false;
    }
    const TFeature* feature = featureList->Find(featureName);
    // A feature that the program does not have could not be computed for a query.
    if (feature == nullptr) {
      return Fail("Unknown feature");
    }
    Print("Loading features..");
    // Nothing is refused on the strength of it: a collection that was moved has other paths and the same pictures. The
    // user is told, and decides.
    const TFeatureSources sources(featureName);
    if (!sources.IsKnown()) {
      PrintLoss(FormatString("File '%s' cannot be read", sources.GetPath().c_str()));
    }
    TStoredFeatureReader reader(featureName, feature->GetLength());
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    int fromOthers = 0;
    int missing = 0;
    const auto step = [&](TVarImage& image) {
      const base::TReadOutcome outcome = reader.Read(image.GetFilename(), image.GetImageSegment().GetFeatures());
      if (outcome == base::TReadOutcome::kRead) {
        fromOthers += sources.ComeFromOther(base::FileNameOf(reader.GetPath()), image.GetFilename()) ? 1 : 0;
      } else if (outcome == base::TReadOutcome::kUnreadable) {
        // A file that is there and cannot be read is reported by name; one that is not there is the usual case and only
        // counted.
        report.AddUnreadable(reader.GetPath());
      } else if (outcome == base::TReadOutcome::kTooLarge) {
        PrintLoss(FormatString("File '%s' is too large", reader.GetPath().c_str()));
      } else {
        ++missing;
      }
      ProcessEvents();
      return true;
    };
    const auto atEnd = [&] {
      report.PrintRest();
      PrintCount(fromOthers, "stored features come from other pictures");
      PrintCount(missing, "images without a stored feature");
    };
    if (!ForEachImage(TImageSelection(*database), step, atEnd)) {
      return false;
    }
    Print("Done");
    return true;
  }
};

}  // namespace

const TFunctionFactory kMakeUpdateFeature = MakeFunction<TFunctionUpdateFeature>;
const TFunctionFactory kMakeRemoveFeature = MakeFunction<TFunctionRemoveFeature>;
const TFunctionFactory kMakeSaveFeature = MakeFunction<TFunctionSaveFeature>;
const TFunctionFactory kMakeLoadFeature = MakeFunction<TFunctionLoadFeature>;
