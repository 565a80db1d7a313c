#include "experiments/output-directory.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/format-string.h"
#include "base/native-path.h"

namespace {

/// True for the name of a file or directory that an experiment makes.
bool IsOwn(std::string name) {
  constexpr std::array<std::string_view, 14> kNames = {
      "runs",       "features",   "parts",       "qrels.txt",   "topics.tsv", "summary.tsv",  "comparison.tsv",
      "curves.tsv", "damage.tsv", "record.json", "report.html", "times.tsv",  "concepts.tsv", "segments.tsv"};
  // What an end by force left behind.
  if (name.ends_with(".new")) {
    name.resize(name.size() - 4);
  }
  // Left by base::MakeWritableDirectory where the program was killed while that tried the directory.
  return name.starts_with(".tessimar-") || std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

bool IsOwnBelow(const std::string& directory, const std::string& name) {
  const auto endsWith = [&](const char* ending) {
    return name.ends_with(ending) || name.ends_with(ending + std::string(".new")) ||
           name.ends_with(ending + std::string(".unfinished"));
  };
  if (name.starts_with(".tessimar-")) {
    return true;
  }
  if (directory == "runs") {
    return endsWith(".run");
  }
  return directory == "parts" ? endsWith(".bin") : endsWith(".npy") || endsWith(".txt");
}

}  // namespace

base::TFileReplacement& TOutputDirectory::Begin(const std::string& name) {
  // A deque leaves its elements where they are as it grows; what was returned before stays good.
  return files.emplace_back(path + name);
}

std::string TOutputDirectory::Commit() {
  for (base::TFileReplacement& file : files) {
    // All are written before the first takes its place: on a full disk no result of an earlier experiment is lost, and
    // no table stands beside one of another run.
    if (!file.Finish()) {
      return file.GetPath();
    }
  }
  // To rename takes no room for data: what a full disk refuses it has refused above.
  for (base::TFileReplacement& file : files) {
    if (!file.Commit()) {
      return file.GetPath();
    }
  }
  files.clear();
  return {};
}

bool OpenOutputDirectory(const std::string& path, std::string& reason) {
  const auto refuse = [&](const std::string& name) {
    reason = FormatString("Directory '%s' holds '%s', which is not of an experiment", path.c_str(), name.c_str());
    return false;
  };
  // Before anything is made, so that a directory that is refused stays as it was.
  for (const std::string& name : base::ListDirectory(path).value_or(std::vector<std::string>())) {
    if (!IsOwn(name)) {
      return refuse(name);
    }
  }
  // Files are removed below these later on. A directory with anything else in it was named by mistake.
  for (const std::string below : {"runs", "features", "parts"}) {
    for (const std::string& name : base::ListDirectory(path + below).value_or(std::vector<std::string>())) {
      if (!IsOwnBelow(below, name)) {
        return refuse(below + "/" + name);
      }
    }
  }
  if (!base::MakeWritableDirectory(path)) {
    reason = FormatString("Directory '%s' cannot be written", path.c_str());
    return false;
  }
  return true;
}
