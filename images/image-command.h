#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <boost/function.hpp>

#include "engine/function.h"

class TPictureReport;
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

  /// ForEach whose `step` gets the images themselves.
  bool ForEachImage(
      const TImageSelection& images, const boost::function<bool(TVarImage&)>& step,
      const boost::function<void()>& atEnd = [] {}) const;

  /// ForEachImage for work that reads the pictures: says of a database that it takes its time, and that it is done. The
  /// report that `step` gets with each image has named all files when this returns.
  bool ProcessImages(const TImageSelection& images,
                     const boost::function<bool(TVarImage&, TPictureReport&)>& step) const;
};
