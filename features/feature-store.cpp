#include "features/feature-store.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/little-endian.h"
#include "base/native-path.h"
#include "base/text.h"
#include "images/feature-vector-list.h"

std::string StoredFeaturePath(const std::string& featureName, const std::string& imageFilename) {
  std::string_view stem = base::FileNameOf(imageFilename);
  // Without a full stop rfind gives npos, and the whole name is the stem.
  stem = stem.substr(0, stem.rfind('.'));
  static const std::string directory = base::WithTrailingSeparator(kFeatureDirectory);
  std::string path;
  // One block of memory for all pieces: a collection asks for a path an image. The 5 are "-" and ".dat".
  path.reserve(directory.size() + featureName.size() + stem.size() + 5);
  path.append(directory).append(featureName).append(1, '-').append(stem).append(".dat");
  return path;
}

bool SaveStoredFeature(const std::string& path, const TFeatureVector& vector) {
  // A copy, since the bytes are turned around in place on machines of the other order.
  TFeatureVector stored;
  stored.Assign(vector);
  base::ToLittleEndian(stored.GetData(), stored.GetLength());
  return base::ReplaceFile(path, stored.GetData(), stored.GetLength() * sizeof(double));
}

base::TReadOutcome TStoredFeatureReader::Read(const std::string& imageFilename, TFeatureVectorList& features) {
  path = StoredFeaturePath(featureName, imageFilename);
  const base::TReadOutcome outcome = ReadFile();
  if (outcome != base::TReadOutcome::kRead) {
    return outcome;
  }
  const std::string_view bytes = reader.GetBytes();
  if (bytes.size() % sizeof(double) != 0 || (length && bytes.size() != *length * sizeof(double))) {
    return base::TReadOutcome::kAbsent;
  }
  features.Fill(featureName, [&](TFeatureVector& vector) {
    vector.SetLength(static_cast<std::uint32_t>(bytes.size() / sizeof(double)));
    // Byte by byte, since the bytes of a file need not be aligned for doubles.
    std::copy_n(bytes.data(), bytes.size(), reinterpret_cast<char*>(vector.GetData()));
    base::ToLittleEndian(vector.GetData(), vector.GetLength());
    vector.SetLacksPicture(false);
    return true;
  });
  return outcome;
}

base::TReadOutcome TStoredFeatureReader::ReadFile() {
  // 2^24 doubles, 128 MiB, as many as a plug-in may ask for, and a few bytes: a file with half a double behind those is
  // not too large, but no stored vector.
  constexpr std::uint64_t kMost = (std::uint64_t{1} << 24) * sizeof(double) + sizeof(double) - 1;
  const base::TReadOutcome outcome = reader.Read(path, kMost);
  if (outcome != base::TReadOutcome::kAbsent) {
    return outcome;
  }
  if (!names) {
    auto files = base::ListFiles(kFeatureDirectory);
    if (!files && base::IsDirectory(kFeatureDirectory)) {
      return base::TReadOutcome::kUnreadable;
    }
    names.emplace();
    for (std::string& name : files.value_or(std::vector<std::string>())) {
      // Of names that differ in case only, the smallest: the directory delivers them in an order of its own.
      std::string& known = names->try_emplace(base::FoldCase(name), name).first->second;
      known = std::min(known, name);
    }
  }
  const auto found = names->find(base::FoldCase(std::string(base::FileNameOf(path))));
  if (found == names->end()) {
    return outcome;
  }
  path = base::WithTrailingSeparator(kFeatureDirectory) + found->second;
  return reader.Read(path, kMost);
}
