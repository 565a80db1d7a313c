#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/var.h"

class TVarImage;

/// A directory of images, of type "database": a location and the records of the image files directly in it, shorter
/// file names first, names of equal length in byte order. The position in that list is an image's identity for rankings
/// and annotations. The database owns its images.
class TVarDatabase : public TVar {
 public:
  TVarDatabase();
  ~TVarDatabase() override;

  std::unique_ptr<TVar> CreateNew() const override;
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;

  /// The directory, ended by a separator once set.
  const std::string& GetLocation() const { return location; }
  void SetLocation(const std::string& path);

  const std::vector<std::unique_ptr<TVarImage>>& GetImages() const { return images; }

  /// Replaces the images by what is at the location now, and prints their number: every entry that is no directory and
  /// has ".jpg" in its name. No file is opened. A location that does not exist leaves the list empty. False if the
  /// directory cannot be read; the list is empty then too.
  bool ScanDirectory();

 private:
  std::string location;
  std::vector<std::unique_ptr<TVarImage>> images;
};
