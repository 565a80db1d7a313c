#include "experiments/truth.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "experiments/digest.h"
#include "experiments/encoding.h"
#include "retrieval/annotation.h"

namespace {

/// Gathers pairs of tag and picture; each stands once.
class TTruthReader {
 public:
  TTruthReader(const TPictureCollection& theCollection, TDamageList& theDamage)
      : collection(theCollection), names(theCollection), damage(theDamage) {}

  void AddClasses() {
    for (std::size_t i = 0; i < collection.classes.size(); ++i) {
      // A picture lies in one directory, so that no pair comes twice.
      pairs.emplace(collection.classes[i], static_cast<std::uint32_t>(i));
    }
  }

  bool AddFile(const std::string& path) {
    const auto lines = ReadNumberedLines(path);
    if (!lines) {
      return false;
    }
    // The ending decides, and not the contents: a table of one column would look like annotations.
    if (path.ends_with(".txt")) {
      const std::string tag = AnnotationTag(path);
      // The empty tag stands for all topics in the tables. Some systems put a "._a.txt" beside each "a.txt".
      if (tag.empty()) {
        damage.push_back({path, 0, "the tag, which is the name up to its first full stop, is empty"});
        return true;
      }
      for (const TNumberedLine& line : *lines) {
        AddAnnotation(path, line, tag);
      }
    } else {
      for (const TNumberedLine& line : *lines) {
        // The heading may be there or not.
        // In the first line alone: further down a picture may be called "file".
        if (line.number != 1 || line.text != "file\ttag") {
          AddRow(path, line);
        }
      }
    }
    return true;
  }

  TTruth Finish() const {
    TTruth truth;
    TDigest digest;
    for (const auto& [tag, picture] : pairs) {
      truth.carriers[tag].push_back(picture);
      // Of the pairs and not of the files: the same truth in another form gives the same digest.
      digest.Add(EncodeField(tag) + "\t" + EncodeField(collection.names[picture]) + "\n");
    }
    truth.digest = digest.Finish();
    return truth;
  }

 private:
  void AddAnnotation(const std::string& path, const TNumberedLine& line, const std::string& tag) {
    if (const auto picture = AnnotatedPosition(line.text, collection.names.size())) {
      AddPair(path, line.number, tag, *picture);
    } else {
      damage.push_back({path, line.number,
                        FormatString("'%s' is no number from 1 to %zu", line.text.c_str(), collection.names.size())});
    }
  }

  void AddRow(const std::string& path, const TNumberedLine& line) {
    // Exactly one TAB: a name with blanks in it is nothing unusual.
    const std::size_t tab = line.text.find('\t');
    const std::string name = line.text.substr(0, tab);
    const std::string tag = tab == std::string::npos ? std::string() : line.text.substr(tab + 1);
    if (tag.empty() || tag.find('\t') != std::string::npos) {
      damage.push_back({path, line.number, "the line is not of the form file TAB tag"});
    } else if (const auto picture = names.Find(name)) {
      AddPair(path, line.number, tag, *picture);
    } else {
      damage.push_back({path, line.number, FormatString("no picture is called '%s'", name.c_str())});
    }
  }

  void AddPair(const std::string& path, std::size_t line, const std::string& tag, std::size_t picture) {
    // A pair that stands twice is harmless, but often a sign that two files were mixed up.
    if (!pairs.emplace(tag, static_cast<std::uint32_t>(picture)).second) {
      damage.push_back(
          {path, line, FormatString("'%s' has the tag '%s' already", collection.names[picture].c_str(), tag.c_str())});
    }
  }

  const TPictureCollection& collection;
  const TPictureNames names;
  TDamageList& damage;
  /// By tag and then by picture: carriers come out ascending, and the order of the files does not show in the digest.
  std::set<std::pair<std::string, std::uint32_t>> pairs;
};

/// The files that a path stands for; none for a directory that cannot be read.
std::optional<std::vector<std::string>> TruthFiles(const std::string& path) {
  const std::string nativePath = base::NativePath(path);
  if (!base::IsDirectory(nativePath)) {
    return std::vector<std::string>{nativePath};
  }
  auto files = base::ListFiles(nativePath);
  if (files) {
    // Collections bring a README and other files in the same directory.
    std::erase_if(*files, [](const std::string& name) { return !name.ends_with(".txt"); });
    // By bytes, and not as the system lists them: of two equal pairs the later one is reported.
    std::sort(files->begin(), files->end());
    for (std::string& name : *files) {
      name.insert(0, base::WithTrailingSeparator(nativePath));
    }
  }
  return files;
}

}  // namespace

std::optional<std::vector<TNumberedLine>> ReadNumberedLines(const std::string& path) {
  // A pipe would wait for its other end.
  if (!base::IsRegularFile(path)) {
    return std::nullopt;
  }
  const auto bytes = base::ReadFile(path);
  if (!bytes) {
    return std::nullopt;
  }
  std::vector<TNumberedLine> lines;
  std::string_view rest = base::SkipByteOrderMark(*bytes);
  for (std::size_t number = 1; !rest.empty(); ++number) {
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    // Numbers count blank lines too, as editors do.
    if (!base::Trim(line).empty()) {
      // Not trimmed: a blank at the end may belong to a name.
      lines.push_back({number, std::string(line)});
    }
  }
  return lines;
}

std::optional<TTruth> ReadTruth(const TPictureCollection& collection, const std::vector<std::string>& paths,
                                TDamageList& damage, std::string& reason) {
  TTruthReader reader(collection, damage);
  reader.AddClasses();
  for (const std::string& path : paths) {
    const auto files = TruthFiles(path);
    if (!files) {
      reason = FormatString("Truth '%s' cannot be read", path.c_str());
      return std::nullopt;
    }
    for (const std::string& file : *files) {
      if (!reader.AddFile(file)) {
        reason = FormatString("Truth '%s' cannot be read", file.c_str());
        return std::nullopt;
      }
    }
  }
  return reader.Finish();
}

std::optional<std::vector<std::uint32_t>> ReadQueries(const TPictureCollection& collection, const std::string& path,
                                                      TDamageList& damage, std::string& reason) {
  const auto lines = ReadNumberedLines(path);
  if (!lines) {
    reason = FormatString("Queries '%s' cannot be read", path.c_str());
    return std::nullopt;
  }
  const TPictureNames names(collection);
  // Ascending, as binary searches want it.
  std::set<std::uint32_t> pictures;
  for (const TNumberedLine& line : *lines) {
    const auto picture = names.Find(line.text);
    if (!picture) {
      damage.push_back({path, line.number, FormatString("no picture is called '%s'", line.text.c_str())});
    } else if (!pictures.insert(static_cast<std::uint32_t>(*picture)).second) {
      damage.push_back({path, line.number, FormatString("'%s' was named before", line.text.c_str())});
    }
  }
  return std::vector<std::uint32_t>(pictures.begin(), pictures.end());
}
