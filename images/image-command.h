#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "engine/function.h"
#include "images/picture-report.h"

class TVarDatabase;
class TVarImage;

/// What a command works on: one image, or all images of a database. Refers to the variable.
class TImageSelection {
 public:
  explicit TImageSelection(TVarImage& theImage) : image(&theImage) {}
  explicit TImageSelection(const TVarDatabase& theDatabase) : database(&theDatabase) {}

  bool IsDatabase() const { return database != nullptr; }
  std::size_t GetSize() const;
  TVarImage& operator[](std::size_t i) const;

 private:
  TVarImage* image = nullptr;
  const TVarDatabase* database = nullptr;
};

/// Base of the commands that do the same with each of many images.
class TImageCommand : public TFunction {
 protected:
  using TFunction::TFunction;

  /// The images of the first parameter, an image or a database. Nothing if it is neither, and that has been printed.
  std::optional<TImageSelection> RequireImages(const std::vector<std::string>& params) const;

  /// The database that the first parameter names, with an image at least. Null if it is none, or has none, for which
  /// the line is `ifEmpty`; that has been printed.
  const TVarDatabase* RequireFilledDatabase(const std::vector<std::string>& params, const char* ifEmpty) const;

  /// Calls `step` for each image until it returns false, or until the user wants the command to end, and `atEnd` behind
  /// the last. True if all images are done. Prints a line if the user ended it; a step that returns false has printed
  /// its own.
  template <typename TStep, typename TAtEnd>
  bool ForEachImage(const TImageSelection& images, const TStep& step, const TAtEnd& atEnd) const {
    const std::size_t total = images.GetSize();
    std::size_t done = 0;
    bool isSound = true;
    while (done < total && ReportProgress(done, total)) {
      isSound = step(images[done]);
      if (!isSound) {
        break;
      }
      ++done;
    }
    atEnd();
    return isSound && (done == total || Interrupted(done, total));
  }

  template <typename TStep>
  bool ForEachImage(const TImageSelection& images, const TStep& step) const {
    return ForEachImage(images, step, [] {});
  }

  /// ForEachImage for work that reads the pictures: says of a database that it takes its time, and that it is done. The
  /// report that `step` gets with each image has named all files when this returns.
  template <typename TStep>
  bool ProcessImages(const TImageSelection& images, const TStep& step) const {
    if (images.IsDatabase()) {
      Print("Processing.. this could take some time");
      // Drawn before the first picture, which may take seconds.
      ProcessEvents();
    }
    TPictureReport report([this](const std::string& line) { PrintLoss(line); });
    const bool isDone = ForEachImage(
        images, [&](TVarImage& image) { return step(image, report); }, [&] { report.PrintRest(); });
    if (isDone && images.IsDatabase()) {
      Print("Processing done");
    }
    return isDone;
  }
};
