#include "features/feature-store.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "base/little-endian.h"
#include "base/native-path.h"
#include "images/feature-vector.h"

std::string StoredFeaturePath(const std::string& featureName, const std::string& imageFilename) {
  std::string_view stem = base::FileNameOf(imageFilename);
  stem = stem.substr(0, stem.rfind('.'));
  static const std::string directory = base::WithTrailingSeparator("FeatureStorage");
  std::string path;
  // One block of memory for all pieces: a collection asks for a path an image.
  path.reserve(directory.size() + featureName.size() + stem.size() + 5);
  path.append(directory).append(featureName).append(1, '-').append(stem).append(".dat");
  return path;
}

bool SaveStoredFeature(const std::string& path, const TFeatureVector& vector) {
  TFeatureVector stored;
  stored.Assign(vector);
  base::ToLittleEndian(stored.GetData(), stored.GetLength());
  return base::ReplaceFile(path, stored.GetData(), stored.GetLength() * sizeof(double));
}

base::TReadOutcome LoadStoredFeature(base::TFileReader& reader, const std::string& path, TFeatureVector& vector) {
  constexpr std::uint64_t kMost = (std::uint64_t{1} << 24) * sizeof(double) + sizeof(double) - 1;
  const base::TReadOutcome outcome = reader.Read(path, kMost);
  if (outcome == base::TReadOutcome::kRead) {
    const std::string_view bytes = reader.GetBytes();
    vector.SetLength(static_cast<std::uint32_t>(bytes.size() / sizeof(double)));
    std::copy_n(bytes.data(), vector.GetLength() * sizeof(double), reinterpret_cast<char*>(vector.GetData()));
    base::ToLittleEndian(vector.GetData(), vector.GetLength());
  }
  return outcome;
}
