#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/var.h"
#include "segmentation/image-segment.h"

/// The record of one image, of type "image": a file name and what was computed from the file. It holds no pixels;
/// whoever needs them reads the file again. Image variables stand in the store, images of a database belong to the
/// database.
class TVarImage : public TVar {
 public:
  static constexpr const char* kTypeName = "image";

  TVarImage();

  std::unique_ptr<TVar> CreateNew() const override;
  void Assign(const TVar* source) override;
  std::string GetDescription() const override;

  /// The path as the user gave it, or location and file name after a directory scan.
  const std::string& GetFilename() const { return filename; }
  void SetFilename(std::string newName) { filename = std::move(newName); }

  /// The segment that stands for the whole image. Its rectangle is empty until a feature is computed.
  TImageSegmentRect& GetImageSegment() { return imageSegment; }
  const TImageSegmentRect& GetImageSegment() const { return imageSegment; }

  /// The parts of the image, in the order in which they were made.
  TImageSegmentList& GetSegments() { return segments; }
  const TImageSegmentList& GetSegments() const { return segments; }

  std::vector<std::string>& GetTags() { return tags; }
  const std::vector<std::string>& GetTags() const { return tags; }
  /// True if the tag stands in the list at least once. Case counts.
  bool HasTag(const std::string& tag) const;
  /// The tags, each once, in the order in which the image got them, with `separator` between each two.
  std::string JoinTags(std::string_view separator) const;
  /// A line of the tags for people, with the line feed in front of it; empty without tags.
  std::string DescribeTags() const;

 private:
  std::string filename;
  TImageSegmentRect imageSegment;
  TImageSegmentList segments;
  std::vector<std::string> tags;
};
