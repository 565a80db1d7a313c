#include "images/var-database.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "images/picture-list.h"
#include "images/var-image.h"

TVarDatabase::TVarDatabase() : TVar(kTypeName) {}

TVarDatabase::~TVarDatabase() = default;

std::unique_ptr<TVar> TVarDatabase::CreateNew() const {
  return std::make_unique<TVarDatabase>();
}

void TVarDatabase::Assign(const TVar* source) {
  const auto* database = dynamic_cast<const TVarDatabase*>(source);
  if (database == nullptr || database == this) {
    return;
  }
  location = database->location;
  // Each copy has vectors of its own: what is computed for one of the two later on must not show in the other.
  fingerprint.reset();
  images.clear();
  images.reserve(database->images.size());
  for (const auto& image : database->images) {
    auto copy = std::make_unique<TVarImage>();
    copy->Assign(image.get());
    images.push_back(std::move(copy));
  }
}

std::string TVarDatabase::GetDescription() const {
  std::string description =
      "Location: \"" + location + FormatString("\", number of images: %d", static_cast<int>(images.size()));
  if (images.empty()) {
    return description;
  }
  // The first image stands for all: commands compute a feature for every image or, if they are interrupted, from the
  // first one on.
  const auto names = images.front()->GetImageSegment().GetFeatures().GetNames();
  return description + (names.empty() ? ", no features" : ", features: " + base::Join(names, ", "));
}

void TVarDatabase::SetLocation(const std::string& path) {
  location = base::WithTrailingSeparator(path);
  fingerprint.reset();
}

std::uint64_t TVarDatabase::GetFingerprint() const {
  if (!fingerprint) {
    // An odd factor keeps every bit of what came before, and makes the order count.
    // 2^64 divided by the golden ratio, which spreads the bits (D. Knuth, The Art of Computer Programming 3, section
    // 6.4, on Fibonacci hashing).
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    // Good for one run of the program only, as std::hash may differ from build to build; no file holds a fingerprint.
    const std::hash<std::string_view> hash;
    std::uint64_t sum = hash(location);
    for (const auto& image : images) {
      sum = sum * kFactor + hash(image->GetFilename());
    }
    fingerprint = sum;
  }
  return *fingerprint;
}

bool TVarDatabase::ScanDirectory() {
  images.clear();
  fingerprint.reset();
  // A directory that has gone is one without images; one that is there and cannot be listed is a failure.
  if (!base::Exists(location)) {
    return true;
  }
  auto names = base::ListFiles(location);
  if (!names) {
    return false;
  }
  int others = 0;
  std::erase_if(*names, [&](const std::string& filename) {
    const bool isLeftOut = !IsPictureName(filename);
    others += isLeftOut && IsNamedLikePicture(filename) ? 1 : 0;
    return isLeftOut;
  });
  SortPictureNames(*names);
  images.reserve(names->size());
  for (const std::string& filename : *names) {
    images.push_back(std::make_unique<TVarImage>());
    images.back()->SetFilename(location + filename);
  }
  // Told, or a user would look in vain for the pictures among them.
  if (others > 0) {
    Print(FormatString("%d other pictures left out: their names do not contain '.jpg'", others));
  }
  Print(FormatString("Database contains %d images", static_cast<int>(images.size())));
  if (images.empty()) {
    PrintDirectories();
  }
  return true;
}

void TVarDatabase::PrintDirectories() const {
  const auto entries = base::ListDirectory(location);
  const auto files = base::ListFiles(location);
  if (entries && files && entries->size() > files->size()) {
    Print(FormatString("%d directories left out", static_cast<int>(entries->size() - files->size())));
  }
}
