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
  TFeatureVector stored;
  stored.Assign(vector);
  base::OrderDoubles(stored.GetData(), stored.GetLength());
  return base::ReplaceFile(path, stored.GetData(), stored.GetLength() * sizeof(double));
}

TLoadOutcome LoadStoredFeature(const std::string& path, TFeatureVector& vector) {
  constexpr std::uint64_t kMaxLength = 1 << 24;
  base::TRegularFile file(path);
  if (!file.IsOpen()) {
    return TLoadOutcome::kAbsent;
  }
  const std::uint64_t length = file.GetSize() / sizeof(double);
  if (length > kMaxLength) {
    return TLoadOutcome::kTooLarge;
  }
  TFeatureVector loaded;
  loaded.SetLength(static_cast<std::uint32_t>(length));
  if (!file.Read(loaded.GetData(), loaded.GetLength() * sizeof(double))) {
    return TLoadOutcome::kAbsent;
  }
  base::OrderDoubles(loaded.GetData(), loaded.GetLength());
  vector.SwapNumbers(loaded);
  return TLoadOutcome::kLoaded;
}
