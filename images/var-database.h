#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/var.h"

class TVarImage;

/// A directory of images, of type "database": a location and the records of the image files directly in it, shorter
/// file names first, names of equal length in byte order. The position in that list is an image's identity for rankings
/// and annotations. The database owns its images.
class TVarDatabase : public TVar {
 public:
  static constexpr const char* kTypeName = "database";

  TVarDatabase();
  ~TVarDatabase() override;

  std::unique_ptr<TVar> CreateNew() const override;
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;

  /// The directory, ended by a separator once set.
  const std::string& GetLocation() const { return location; }
  void SetLocation(const std::string& path);

  const std::vector<std::unique_ptr<TVarImage>>& GetImages() const { return images; }

  /// A number made of the location and the names of all images in order: databases with different ones are told apart
  /// by it. Of this run of the program only.
  std::uint64_t GetFingerprint() const;

  /// Replaces the images by what is at the location now, and prints their number: every entry that is no directory and
  /// has ".jpg" in its name. Other pictures are counted, and where there is no image at all, so are directories. No
  /// file is opened. A location that does not exist leaves the list empty. False if the directory cannot be read; the
  /// list is empty then too.
  bool ScanDirectory();

 private:
  /// Says how many directories there are at the location.
  void PrintDirectories() const;

  std::string location;
  std::vector<std::unique_ptr<TVarImage>> images;
  /// Worked out at the first question.
  mutable std::optional<std::uint64_t> fingerprint;
};
