#include "images/var-image.h"

#include <algorithm>

#include "base/format-string.h"
#include "base/text.h"

TVarImage::TVarImage() : TVar(kTypeName) {}

std::unique_ptr<TVar> TVarImage::CreateNew() const {
  return std::make_unique<TVarImage>();
}

void TVarImage::Assign(const TVar* source) {
  const auto* image = dynamic_cast<const TVarImage*>(source);
  if (image == nullptr || image == this) {
    return;
  }
  filename = image->filename;
  // With their vectors, but without the labels of segments, which belong to a search on the source.
  imageSegment.Assign(image->imageSegment);
  CopySegments(segments, image->segments);
  tags = image->tags;
}

std::string TVarImage::GetDescription() const {
  std::string description = "Filename: \"" + filename + "\"";
  const auto names = imageSegment.GetFeatures().GetNames();
  description += names.empty() ? ", no features" : ", features: " + base::Join(names, ", ");
  if (segments.empty()) {
    return description;
  }
  description += FormatString(", %d segments", static_cast<int>(segments.size()));
  // As with databases, the first one stands for all.
  const auto segmentNames = segments.front()->GetFeatures().GetNames();
  description += segmentNames.empty() ? " without features" : " with features: " + base::Join(segmentNames, ", ");
  return description;
}

bool TVarImage::HasTag(const std::string& tag) const {
  return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

std::string TVarImage::JoinTags(std::string_view separator) const {
  // A tag may stand there several times, once for each annotation file that was loaded twice. Images have a handful of
  // tags, so that a search through them is faster than a set.
  std::vector<std::string> different;
  for (const std::string& tag : tags) {
    if (std::find(different.begin(), different.end(), tag) == different.end()) {
      different.push_back(tag);
    }
  }
  return base::Join(different, separator);
}

std::string TVarImage::DescribeTags() const {
  return tags.empty() ? std::string() : "\nTags: " + JoinTags(", ");
}
