#include "features/feature-sources.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/file-stamp.h"
#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "features/feature-store.h"

namespace {

// Two fields, as a stamp has two.
constexpr std::string_view kUnknown = "-\t-";

/// Size and time of change of a picture; empty if there is none.
std::string StampOf(const std::string& picture) {
  const auto stamp = base::StampFile(picture);
  return stamp ? FormatString("%llu\t%lld.%09ld", static_cast<unsigned long long>(stamp->size),
                              static_cast<long long>(stamp->seconds), static_cast<long>(stamp->nanoseconds))
               : std::string();
}

}  // namespace

TFeatureSources::TFeatureSources(const std::string& featureName)
    : path(base::WithTrailingSeparator(kFeatureDirectory) + featureName + ".sources") {
  std::string text;
  isKnown = base::ReadFile(path, text) != base::TReadOutcome::kUnreadable;
  std::string_view rest = text;
  // A last line without its line end was cut off by somebody, and is not believed.
  for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    const std::size_t first = line.find('\t');
    // Without a first tab the search begins at the start again, as npos + 1 is 0, and finds none either.
    const std::size_t second = line.find('\t', first + 1);
    if (second == std::string_view::npos) {
      continue;
    }
    const std::string_view stamp = line.substr(second + 1);
    // Of two lines for one file the later one holds.
    sources[base::UnescapeField(line.substr(0, first))] = {
        base::UnescapeField(line.substr(first + 1, second - first - 1)),
        stamp == kUnknown ? std::string() : std::string(stamp)};
  }
}

void TFeatureSources::Note(std::string_view storedFile, const std::string& picture) {
  sources[std::string(storedFile)] = {picture, StampOf(picture)};
}

bool TFeatureSources::ComeFromOther(std::string_view storedFile, const std::string& picture) const {
  const auto found = sources.find(std::string(storedFile));
  if (found == sources.end()) {
    return false;
  }
  const TSource& source = found->second;
  if (source.picture != picture) {
    return true;
  }
  if (source.stamp.empty()) {
    return false;
  }
  const std::string stamp = StampOf(picture);
  // A picture that is gone says nothing about whether the stored vector was made from it.
  return !stamp.empty() && stamp != source.stamp;
}

bool TFeatureSources::Save() const {
  std::vector<std::string> lines;
  lines.reserve(sources.size());
  for (const auto& [storedFile, source] : sources) {
    lines.push_back(base::EscapeField(storedFile) + '\t' + base::EscapeField(source.picture) + '\t' +
                    (source.stamp.empty() ? std::string(kUnknown) : source.stamp) + '\n');
  }
  // The table has no order of its own; the file should be the same whenever its contents are.
  std::sort(lines.begin(), lines.end());
  const std::string text = base::Join(lines, "");
  return base::ReplaceFile(path, text.data(), text.size());
}
