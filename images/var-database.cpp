#include "images/var-database.h"

#include <utility>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "images/picture-list.h"
#include "images/var-image.h"

TVarDatabase::TVarDatabase() : TVar("database") {}

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
  const auto names = images.front()->GetImageSegment().GetFeatures().GetNames();
  return description + (names.empty() ? ", no features" : ", features: " + base::Join(names, ", "));
}

void TVarDatabase::SetLocation(const std::string& path) {
  location = base::WithTrailingSeparator(path);
}

bool TVarDatabase::ScanDirectory() {
  images.clear();
  if (!base::Exists(location)) {
    return true;
  }
  const auto names = ListPictures(location);
  if (!names) {
    return false;
  }
  images.reserve(names->size());
  for (const std::string& name : *names) {
    images.push_back(std::make_unique<TVarImage>());
    images.back()->SetFilename(location + name);
  }
  Print(FormatString("Database contains %d images", static_cast<int>(images.size())));
  return true;
}
