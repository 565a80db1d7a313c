#include "features/feature-store.h"

#include <cstdint>
#include <string_view>

#include "base/file.h"
#include "base/little-endian.h"
#include "base/native-path.h"
#include "images/feature-vector.h"

std::string StoredFeaturePath(const std::string& featureName, const std::string& imageFilename) {
  std::string_view stem = base::FileNameOf(imageFilename);
  stem = stem.substr(0, stem.rfind('.'));
  return base::WithTrailingSeparator("FeatureStorage") + featureName + "-" + std::string(stem) + ".dat";
}

bool SaveStoredFeature(const std::string& path, const TFeatureVector& vector) {
  return base::ReplaceFile(
      path, [&](std::FILE* file) { return base::WriteDoubles(file, vector.GetData(), vector.GetLength()); });
}

TLoadOutcome LoadStoredFeature(const std::string& path, TFeatureVector& vector) {
  constexpr std::uint64_t kMaxLength = 1 << 24;
  const base::TFilePointer file = base::OpenRegularFile(path);
  const auto size = file ? base::RemainingBytes(file.get()) : std::nullopt;
  if (!size) {
    return TLoadOutcome::kAbsent;
  }
  const std::uint64_t length = *size / sizeof(double);
  if (length > kMaxLength) {
    return TLoadOutcome::kTooLarge;
  }
  TFeatureVector loaded;
  loaded.SetLength(static_cast<std::uint32_t>(length));
  if (!base::ReadDoubles(file.get(), loaded.GetData(), loaded.GetLength())) {
    return TLoadOutcome::kAbsent;
  }
  loaded.SetName(vector.GetName());
  vector.Assign(loaded);
  return TLoadOutcome::kLoaded;
}
